"""Small faults that can be planted into C++ source, found token by token.

The sources are laid out by clang-format, and that is what the reading relies on: an operator of two operands stands
between spaces, a template's brackets and a pointer's star don't.
"""
import re
from dataclasses import dataclass

TOKEN = re.compile(
    r"""
    (?P<comment>//[^\n]*|/\*.*?\*/)
  | (?P<directive>^[ \t]*\#(?:[^\n\\]|\\.|\\\n)*)
  | (?P<raw>(?:u8|u|U|L)?R"(?P<fence>[^(\s]*)\(.*?\)(?P=fence)")
  | (?P<string>(?:u8|u|U|L)?"(?:[^"\\\n]|\\.)*")
  | (?P<character>(?:u8|u|U|L)?'(?:[^'\\\n]|\\.)+')
  | (?P<number>\b(?:0[xX][0-9a-fA-F']+|[0-9][0-9']*(?:\.[0-9]*)?(?:[eE][+-]?[0-9]+)?)[uUlLzZfF]*\b)
  | (?P<name>[A-Za-z_]\w*)
  | (?P<sign><<=|>>=|<=>|->\*|\.\.\.|->|\+\+|--|<<|<=|>=|==|!=|&&|\|\||[-+*/%&|^]=|::|[^\s\w])
    """,
    re.VERBOSE | re.DOTALL | re.MULTILINE,
)
COMPARISONS = {"==": "!=", "!=": "==", "<": "<=", "<=": "<", ">": ">=", ">=": ">"}
ARITHMETIC = {
    "+": "-", "-": "+", "*": "/", "/": "*", "%": "*", "<<": ">>", ">>": "<<", "&": "|", "|": "&", "^": "|",
    "+=": "-=", "-=": "+=", "*=": "+=", "/=": "*=", "|=": "&=", "&=": "|=", "^=": "|=",
}
STEPS = {"++": "--", "--": "++"}
LOGICAL = {"&&": "||", "||": "&&"}
OPENING = {"(": ")", "[": "]", "{": "}"}
CLOSING = set(OPENING.values())
# What begins a statement that is no plain action.
NO_ACTION = {
    "return", "using", "static_assert", "const", "constexpr", "static", "auto", "case", "default", "template",
    "typedef", "friend", "goto", "if", "for", "while", "do", "switch", "else", "try", "catch", "struct", "class", "enum",
    "public", "private", "protected", "namespace", "extern", "inline", "thread_local", "union",
}


@dataclass(frozen=True)
class Mutation:
    """One fault: `old`, at that place of the file, becomes `new`."""

    file: str
    place: int
    line: int
    kind: str
    old: str
    new: str

    def applied_to(self, text):
        return text[: self.place] + self.new + text[self.place + len(self.old) :]

    def __str__(self):
        return f"{self.file}:{self.line}: {self.kind}: {brief(self.old)} -> {brief(self.new)}"


def brief(text):
    text = " ".join(text.split())
    return f"'{text if len(text) <= 70 else text[:67] + '...'}'"


class Token:
    def __init__(self, match):
        self.kind = match.lastgroup if match.lastgroup != "fence" else "raw"
        self.text = match.group()
        self.start = match.start()
        self.end = match.end()
        self.partner = None  # the index of the bracket that belongs to this one
        self.within = None  # the index of the bracket that it stands in
        self.in_function = False
        self.skipped = False


class Source:
    """The tokens of one file, and the faults that they allow."""

    def __init__(self, file, text):
        self.file = file
        self.text = text
        self.tokens = [Token(m) for m in TOKEN.finditer(text) if m.lastgroup not in ("comment", "directive")]
        self.found = []
        self._match_brackets()
        self._mark_functions()
        self._mark_skipped()

    def mutations(self):
        for index, token in enumerate(self.tokens):
            if token.skipped:
                continue
            if token.kind == "number" and not self._says_pure(index):
                self._number(token)
            elif token.kind == "sign":
                self._sign(index, token)
            elif token.text in ("true", "false"):
                self._add("boolean", token.start, token.text, "false" if token.text == "true" else "true")
            elif token.in_function:
                self._word(index, token)
            if token.in_function and self._begins_statement(index):
                self._statement(index)
        return self.found

    # ---- what stands where ----

    def _match_brackets(self):
        open_brackets = []
        for index, token in enumerate(self.tokens):
            token.within = open_brackets[-1] if open_brackets else None
            if token.kind != "sign":
                continue
            if token.text in OPENING:
                open_brackets.append(index)
            elif token.text in CLOSING and open_brackets:
                other = open_brackets.pop()
                token.partner, self.tokens[other].partner = other, index

    def _mark_functions(self):
        """A brace opens a function's body when it follows a parameter list and names no scope."""
        end_of_body = -1
        head = 0
        for index, token in enumerate(self.tokens):
            token.in_function = index < end_of_body
            if token.text == "{" and not token.in_function:
                words = [t.text for t in self.tokens[head:index]]
                scope = {"namespace", "class", "struct", "union", "enum"} & set(words)
                if ")" in words and not scope and token.partner:
                    end_of_body = token.partner
            if token.text in (";", "{", "}"):
                head = index + 1

    def _mark_skipped(self):
        """Checks of the compiler and types can't fail at run time."""
        for index, token in enumerate(self.tokens):
            following = self._at(index + 1)
            if token.text in ("static_assert", "sizeof", "alignas", "requires", "decltype") and following.text == "(":
                self._skip(index, following.partner)
            elif token.text in ("noexcept", "explicit") and following.text == "(":
                self._skip(index, following.partner)
            elif token.text == "if" and following.text == "constexpr":
                self._skip(index, self._at(index + 2).partner)
            elif token.text == "[" and following.text == "[":
                self._skip(index, token.partner)
            elif token.text == "template" and following.text == "<":
                last = index + 1
                while self._at(last + 1).text not in (";", "{", "}", "", "class", "struct", "inline", "constexpr", "[",
                                                      "auto", "void", "bool", "int", "requires", "using"):
                    last += 1
                self._skip(index, last)

    def _skip(self, first, last):
        for token in self.tokens[first : (last or first) + 1]:
            token.skipped = True

    def _at(self, index):
        if 0 <= index < len(self.tokens):
            return self.tokens[index]
        return Token(re.match("(?P<sign>)", ""))

    def _stands_alone(self, token):
        return self.text[token.start - 1 : token.start] in (" ", "\n") and self.text[token.end : token.end + 1] in (" ", "\n")

    def _says_pure(self, index):
        """The number of `virtual ... = 0`."""
        return self._at(index - 1).text == "=" and self._at(index - 2).text in (")", "const", "noexcept")

    # ---- the faults ----

    def _add(self, kind, place, old, new):
        line = self.text.count("\n", 0, place) + 1
        self.found.append(Mutation(self.file, place, line, kind, old, new))

    def _number(self, token):
        digits = token.text.replace("'", "").rstrip("uUlLzZ")
        try:
            value = int(digits, 16 if digits[:2] in ("0x", "0X") else 10)
        except ValueError:
            return  # a fraction
        suffix = token.text.replace("'", "")[len(digits) :]
        self._add("constant", token.start, token.text, f"{value + 1}{suffix}")
        if value > 0:
            self._add("constant", token.start, token.text, f"{value - 1}{suffix}")

    def _sign(self, index, token):
        if token.text in STEPS and token.in_function:
            self._add("arithmetic", token.start, token.text, STEPS[token.text])
        if not self._stands_alone(token):
            return
        if token.text in COMPARISONS and self._at(index - 1).text != "operator":
            self._add("comparison", token.start, token.text, COMPARISONS[token.text])
        elif token.text in ARITHMETIC:
            self._add("arithmetic", token.start, token.text, ARITHMETIC[token.text])
        elif token.text in LOGICAL and token.in_function:
            self._add("logic", token.start, token.text, LOGICAL[token.text])

    def _word(self, index, token):
        following = self._at(index + 1)
        if token.text in ("if", "while") and following.text == "(" and following.partner:
            self._condition(index + 1, following.partner)
        elif token.text == "return" and following.text not in (";", "{"):
            end = self._end_of_statement(index)
            if end:
                old = self.text[following.start : self.tokens[end].start]
                if old not in ("nullptr", "false", "0", "{}", "S_OK"):
                    self._add("result", following.start, old, "{}")
        elif token.kind == "name" and following.text in ("(", "{") and following.partner and token.text not in NO_ACTION:
            self._arguments(index + 1, following.partner)

    def _condition(self, opening, closing):
        start = self.tokens[opening].end
        for index in range(opening + 1, closing):
            if self.tokens[index].text == ";":
                start = self.tokens[index].end + 1
        old = self.text[start : self.tokens[closing].start]
        self._add("condition", start, old, f"!({old})")

    def _arguments(self, opening, closing):
        """Each argument and the next one change places."""
        edges = [self.tokens[opening].end]
        index = opening + 1
        while index < closing:
            token = self.tokens[index]
            if token.text in OPENING and token.partner:
                index = token.partner
            elif token.text == ",":
                edges.append(token.start)
                edges.append(token.end)
            elif token.text == "{" or token.text == ";":
                return
            index += 1
        edges.append(self.tokens[closing].start)
        arguments = [self.text[a:b].strip() for a, b in zip(edges[::2], edges[1::2])]
        for number in range(len(arguments) - 1):
            left, right = arguments[number], arguments[number + 1]
            if left == right or not left or not right or "[=" in left + right or "[&" in left + right:
                continue
            start = edges[2 * number]
            end = edges[2 * number + 3]
            self._add("arguments", start, self.text[start:end], f"{right}, {left}")

    def _begins_statement(self, index):
        within = self.tokens[index].within
        if within is None or self.tokens[within].text != "{":
            return False
        before = self._at(index - 1)
        if before.text in (";", "{", "}", "else"):
            return True
        opening = before.partner if before.text == ")" else None
        return opening is not None and self._at(opening - 1).text in ("if", "for", "while")

    def _end_of_statement(self, index):
        while index < len(self.tokens):
            token = self.tokens[index]
            if token.text == ";":
                return index
            if token.text in CLOSING:
                return None
            index = token.partner + 1 if token.text in OPENING and token.partner else index + 1
        return None

    def _statement(self, index):
        """An action left out: a call, an assignment, a jump."""
        token = self.tokens[index]
        end = self._end_of_statement(index)
        if token.text in NO_ACTION or token.kind == "sign" and token.text not in ("*", "++", "--", "(") or not end:
            return
        words = self.tokens[index:end]
        # Two names in a row, or a name after a type's brackets, declare something.
        declares = any(
            b.kind == "name" and (a.kind == "name" and a.text not in ("throw", "delete", "new", "return", "co_return")
                                  or a.text in (">", "*", "&") and not self._stands_alone(a))
            for a, b in zip(words, words[1:3])
        )
        if not declares:
            self._add("left out", token.start, self.text[token.start : self.tokens[end].start], "")


def mutations_of(file, text):
    return Source(file, text).mutations()
