#!/usr/bin/env python3
"""Doxygen's input filter: the headers' plain comments as documentation.

A comment belongs to the declarations that follow it without an empty line, all of them; one that an empty line
follows to those of its group that have none of their own. A comment at the head of a file is the file's, and speaks for
what has no other; so does a class's for its constructors and operators. One behind a declaration on its line is that
declaration's. Code is passed on as it is, but for members that say nothing to a reader: deleted ones, destructors,
friends. Any other member without a comment is what Doxygen is there to find.
"""
import re
import sys
from pathlib import Path

SILENT = re.compile(r"^\s*(?:[\w:<>]+\([^()]*(?:\([^()]*\))?[^()]*\)(?: noexcept)? = delete;"
                    r"|[\w:<>]+& operator=\([^()]*\)(?: noexcept)? = delete;"
                    r"|(?:virtual )?~\w+\(\)(?: noexcept)?(?: override| = default)?(?:;| \{.*\})?"
                    r"|friend .*;|extern template .*;|static_assert\(.*\);)$")
INCLUDE = re.compile(r"^\s*#")
LABEL = re.compile(r"^\s*(?:public|protected|private):$|^\s*\}")


def escaped(text):
    """Comments are prose, not markup: nothing in them is a command, a link or a tag. Names stand in backticks."""
    return re.sub(r"`([^`]+)`", r"<tt>\1</tt>", re.sub(r"([\\@<>#%&$])", r"\\\1", text))


def documentation(comment, indent):
    """The comment as a block of Doxygen's: paragraphs as prose, whatever is indented as it stands."""
    lines, literal = [], False
    for line in comment:
        text = re.sub(r"^\s*// ?", "", line)
        if text.startswith("  ") and not literal:
            lines.append("@verbatim")
            literal = True
        elif literal and text and not text.startswith("  "):
            lines.append("@endverbatim")
            literal = False
        lines.append(text if literal else escaped(text))
    if literal:
        lines.append("@endverbatim")
    return [f"{indent}/// {line}".rstrip() for line in lines]


def paragraphs(lines):
    paragraph = []
    for line in lines:
        if line.strip():
            paragraph.append(line)
        elif paragraph:
            yield paragraph
            paragraph = []
    if paragraph:
        yield paragraph


def starts(line, previous, indent):
    """Whether a declaration starts in this line."""
    own = len(line) - len(line.lstrip())
    done = previous is None or re.search(r"[;{}]\s*(?://.*)?$|:$", previous) or previous.lstrip().startswith("#")
    return own == indent and done and not LABEL.match(line) and not INCLUDE.match(line)


class Scopes:
    """What documents a declaration that has no comment of its own."""

    def __init__(self, head):
        self.head = head
        self.sections = {}  # indentation: a comment that an empty line follows, for the group behind it
        self.classes = {}   # indentation of the members: the class's name and comment

    def enter(self, line, documented, indent):
        self.leave(indent)
        opened = re.match(r"\s*(?:template .*> )?(?:class|struct) (\w+)\b.*\{$", line)
        if opened:
            self.classes[indent + 4] = (opened.group(1), documented)

    def leave(self, indent):
        for table in (self.sections, self.classes):
            for inner in [key for key in table if key > indent]:
                del table[inner]

    def fallback(self, line, indent):
        if indent in self.sections:
            return self.sections[indent]
        if indent in self.classes:
            name, _ = self.classes[indent]
            if line.startswith("    virtual ") and "= 0;" in line:
                return ["// Excel's published member of that name; docs/object-model.md has its DISPID and arguments."]
            if re.match(rf"\s*(?:(?:explicit|constexpr|consteval|\[\[nodiscard\]\]) )*{name}\(|.*\boperator\b|[^()]*;", line):
                return ["// As the class's comment tells."]
            return []
        if self.head and not self.classes and not re.match(r"\s*(?:namespace|enum|extern|class \w+;|struct \w+;)", line):
            return ["// As the head of this file tells."]
        return []


def convert(paragraph, scopes):
    comment, previous, out = [], None, []
    documented = []
    for line in paragraph:
        if line.lstrip().startswith("//"):
            if previous is not None:
                documented = []
                previous = None
            comment.append(line)
            continue
        if comment:
            documented, comment = comment, []
        if SILENT.match(line):
            continue
        indent = len(line) - len(line.lstrip())
        if line.lstrip().startswith("}"):
            scopes.leave(indent)
        new = starts(line, previous, indent)
        if new:
            own = documented if documented and indent == len(documented[0]) - len(documented[0].lstrip()) else []
            words = own or scopes.fallback(line, indent)
            scopes.enter(line, own, indent)
        trailing = "// namespace" not in line and re.match(r"^(.*[;,{}(\w])\s+// (.*)$", line)
        if trailing:
            out.append(f"{trailing.group(1)}  ///< {escaped(trailing.group(2))}")
        else:
            if new and words:
                out += documentation(words, " " * indent)
            out.append(line)
        previous = line
    if comment and previous is None:
        indent = len(comment[0]) - len(comment[0].lstrip())
        scopes.leave(indent)
        scopes.sections[indent] = comment
    return out + comment


def main():
    lines = open(sys.argv[1], encoding="utf-8").read().split("\n")
    head = []
    while lines and (lines[0].startswith("//") or not lines[0].strip()):
        head.append(lines.pop(0))
    if any(line.strip() for line in head):
        print(f"/// @file\n/// @ingroup {Path(sys.argv[1]).parent.name}\n///")
        print("\n".join(documentation([line for line in head if line.strip()], "")))
    print()
    scopes = Scopes(head)
    for paragraph in paragraphs(lines):
        print("\n".join(convert(paragraph, scopes)))
        print()


if __name__ == "__main__":
    main()
