#!/usr/bin/env python3
"""Doxygen's input filter: the headers' plain comments as documentation.

A comment belongs to the declarations that follow it without an empty line, all of them. A comment at the head of a
file is the file's, one behind a declaration on its line is that declaration's. Code is passed on as it is, but for
members that say nothing to a reader: deleted ones, destructors, friends.
"""
import re
import sys

SILENT = re.compile(r"^\s*(?:[\w:<>]+\([^()]*(?:\([^()]*\))?[^()]*\)(?: noexcept)? = delete;"
                    r"|[\w:<>]+& operator=\([^()]*\)(?: noexcept)? = delete;"
                    r"|(?:virtual )?~\w+\(\)(?: noexcept)?(?: override| = default)?(?:;| \{.*\})?"
                    r"|friend .*;|static_assert\(.*\);)$")
INCLUDE = re.compile(r"^\s*#")
LABEL = re.compile(r"^\s*(?:public|protected|private):$|^\s*\}")


def escaped(text):
    """Comments are prose, not markup: nothing in them is a command, a link or a tag."""
    return re.sub(r"([\\@<>#%&$])", r"\\\1", text)


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


def convert(paragraph):
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
        trailing = re.match(r"^(.*[;,{}(\w])\s+// (.*)$", line)
        if trailing:
            out.append(f"{trailing.group(1)}  ///< {escaped(trailing.group(2))}")
        else:
            if documented and starts(line, previous, len(documented[0]) - len(documented[0].lstrip())):
                out += documentation(documented, " " * indent)
            out.append(line)
        previous = line
    return out + comment


def main():
    lines = open(sys.argv[1], encoding="utf-8").read().split("\n")
    head = []
    while lines and (lines[0].startswith("//") or not lines[0].strip()):
        head.append(lines.pop(0))
    if any(line.strip() for line in head):
        print("/// @file")
        print("\n".join(documentation([line for line in head if line.strip()], "")))
    print()
    for paragraph in paragraphs(lines):
        print("\n".join(convert(paragraph)))
        print()


if __name__ == "__main__":
    main()
