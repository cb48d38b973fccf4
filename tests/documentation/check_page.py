#!/usr/bin/env python3
"""Holds a page against what it tells of: its listings against the sources, its output against the programs.

    check_page.py PAGE --scratch FOLDER [--path FOLDER]... [--set NAME=VALUE]... [--copy FILE]...

Three kinds of fenced blocks are looked at; the first two are marked by a comment on the line ahead of them.

    <!-- listing: examples/layers/values.cpp -->    the block stands in that file of the project, line by line
    <!-- file: sheet.csv -->                        the block is written to the scratch folder under that name
    <!-- file: own.cpp = examples/own-addin/own.cpp -->   both: the block is that whole file
    ```console                                      each "$ command" is run by bash in the scratch folder, and
                                                    what it prints is what stands below it

In output a line "..." stands for any lines, and "..." inside a line for any characters. --path puts a folder in
front of PATH, --set sets a variable of the environment, --copy puts a file into the scratch folder; KESTROLUMEN is
set to the project's folder.
"""
import argparse
import os
import re
import shutil
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
MARK = re.compile(r"^<!-- (listing|file): (\S+?)(?: = (\S+))? -->$")


def blocks(page):
    """(line number, mark or None, language, lines) of each fenced block."""
    mark, fence = None, None
    for number, line in enumerate(page.splitlines(), 1):
        if fence is not None:
            if line.strip() == "```":
                indent = min((len(l) - len(l.lstrip()) for l in fence[3] if l.strip()), default=0)
                yield (*fence[:3], [l[indent:] for l in fence[3]])
                mark, fence = None, None
            else:
                fence[3].append(line)
        elif line.strip().startswith("```"):
            fence = (number, mark, line.strip()[3:], [])
        elif line.strip():
            mark = MARK.match(line.strip())


def contains(lines, wanted):
    """Whether the lines stand one after the other in `lines`, indented together or not; "..." skips some."""
    stripped = [l.strip() for l in lines]
    position = 0
    for part in re.split(r"(?m)^\s*(?://\s*)?\.\.\.$", "\n".join(wanted)):
        part = [l.strip() for l in part.strip("\n").split("\n")]
        found = [i for i in range(position, len(stripped) - len(part) + 1) if stripped[i:i + len(part)] == part]
        if not found:
            return False
        position = found[0] + len(part)
    return True


def pattern(expected):
    parts = []
    for line in expected:
        if line.strip() == "...":
            parts.append(r"(?:.*\n)*?")
        else:
            parts.append(".*?".join(re.escape(p) for p in line.rstrip().split("...")) + r"[ \t]*\n")
    return re.compile("".join(parts) + r"\Z")


def steps(lines):
    """(command, lines of its output); a command goes on behind a backslash or an open quote's indented lines."""
    command, output = None, []
    for line in lines:
        if line.startswith("$ "):
            if command is not None:
                yield command, output
            command, output = line[2:], []
        elif command is not None and command.endswith("\\"):
            command += "\n" + line
        else:
            output.append(line)
    if command is not None:
        yield command, output


def run(command, output, scratch, environment):
    result = subprocess.run(["bash", "-c", command], cwd=scratch, env=environment, stdin=subprocess.DEVNULL,
                            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=600, check=False)
    printed = result.stdout.decode("utf-8", "replace")
    if printed and not printed.endswith("\n"):
        printed += "\n"
    if pattern(output).match(printed):
        return None
    return f"`{command}` (exit code {result.returncode}) printed\n{printed}where the page has\n" + "\n".join(output)


def check(block, scratch, environment):
    _, mark, language, lines = block
    if mark is not None:
        kind, name, source = mark.groups()
        source = name if kind == "listing" else source
        if source is not None:
            text = (ROOT / source).read_text(encoding="utf-8").splitlines()
            if not (contains(text, lines) if kind == "listing" else text == lines):
                return f"the listing isn't what stands in {source}"
        if kind == "file":
            target = scratch / name
            target.parent.mkdir(parents=True, exist_ok=True)
            target.write_text("\n".join(lines) + "\n", encoding="utf-8")
    elif language == "console":
        for command, output in steps(lines):
            fault = run(command, output, scratch, environment)
            if fault is not None:
                return fault
    return None


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("page", type=Path)
    parser.add_argument("--scratch", type=Path, required=True)
    parser.add_argument("--path", action="append", default=[])
    parser.add_argument("--set", action="append", default=[])
    parser.add_argument("--copy", action="append", default=[])
    arguments = parser.parse_args()

    shutil.rmtree(arguments.scratch, ignore_errors=True)
    arguments.scratch.mkdir(parents=True)
    for file in arguments.copy:
        shutil.copy(file, arguments.scratch)
    environment = dict(os.environ)
    environment["PATH"] = os.pathsep.join([*arguments.path, environment["PATH"]])
    environment["KESTROLUMEN"] = str(ROOT)
    environment.update(setting.split("=", 1) for setting in arguments.set)

    checked = faults = 0
    for block in blocks(arguments.page.read_text(encoding="utf-8")):
        if block[1] is None and block[2] != "console":
            continue
        checked += 1
        fault = check(block, arguments.scratch, environment)
        if fault is not None:
            faults += 1
            print(f"{arguments.page}:{block[0]}: {fault}")
    print(f"{arguments.page.name}: {checked} blocks checked, {faults} of them wrong")
    return 1 if faults or not checked else 0


if __name__ == "__main__":
    sys.exit(main())
