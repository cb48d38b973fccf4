#!/usr/bin/python3
"""Three steps of scripts/package.sh, by the system's Python, which has Markdown from its package.

    page.py PAGE.md FILE.html     one page as a file that any browser shows, for a folder without the project
    page.py --zip FOLDER FILE     the folder as a zip, the same to the byte for the same files and SOURCE_DATE_EPOCH
    page.py --stamp FILE...       Windows modules whose table of exports the linker dated with the clock: dated with
                                  SOURCE_DATE_EPOCH, as their heads are ("PE Format" of Microsoft)
"""
import os
import re
import sys
import time
import zipfile
from pathlib import Path

STYLE = """
body { font: 16px/1.5 system-ui, sans-serif; max-width: 48em; margin: 2em auto; padding: 0 1em; color: #222 }
code, pre { font: 14px/1.4 ui-monospace, Consolas, monospace; background: #f4f4f4 }
code { padding: 0 .2em } pre { padding: .8em; overflow-x: auto } pre code { padding: 0 }
table { border-collapse: collapse } th, td { border: 1px solid #ccc; padding: .3em .6em; text-align: left;
vertical-align: top } @media (prefers-color-scheme: dark) { body { background: #1b1b1b; color: #ddd }
code, pre { background: #2a2a2a } th, td { border-color: #555 } a { color: #8ab4f8 } }
"""


def page(source, target):
    import markdown

    text = source.read_text(encoding="utf-8")
    title = re.search(r"^# (.*)$", text, re.M).group(1)

    def link(match):
        """A file that lies in the folder is linked; what only the project has is named."""
        words, path = match.groups()
        if re.match(r"https?:|#", path):
            return match.group(0)
        name = path.split("#")[0].rsplit("/", 1)[-1]
        return f"[{words}]({name})" if (target.parent / name).exists() else words

    text = re.sub(r"\[([^]]*)\]\(([^)]*)\)", link, text)
    body = markdown.markdown(text, extensions=["tables", "fenced_code", "sane_lists", "toc"])
    target.write_text(f'<!DOCTYPE html>\n<html lang="en"><head><meta charset="utf-8">\n<title>{title}</title>\n'
                      f'<meta name="viewport" content="width=device-width">\n<style>{STYLE}</style></head>\n'
                      f"<body>\n{body}\n</body></html>\n", encoding="utf-8")


def archive(folder, target):
    moment = time.gmtime(max(int(os.environ["SOURCE_DATE_EPOCH"]), 315532800))[:6]
    with zipfile.ZipFile(target, "w", zipfile.ZIP_DEFLATED, compresslevel=9) as out:
        for file in sorted(p for p in folder.rglob("*") if p.is_file()):
            entry = zipfile.ZipInfo(str(file.relative_to(folder.parent)), moment)
            entry.compress_type = zipfile.ZIP_DEFLATED
            entry.create_system = 3
            entry.external_attr = (0o100755 if file.suffix in (".exe", ".xll", ".dll") else 0o100644) << 16
            out.writestr(entry, file.read_bytes())


def stamp(file):
    data = bytearray(file.read_bytes())
    number = lambda at, size=4: int.from_bytes(data[at:at + size], "little")
    head = number(0x3C)
    optional = head + 24
    exports = number(optional + (112 if number(optional, 2) == 0x20B else 96))
    for index in range(number(head + 6, 2)):
        section = optional + number(head + 20, 2) + 40 * index
        begin, size, place = number(section + 12), number(section + 16), number(section + 20)
        if exports and begin <= exports < begin + size:
            moment = int(os.environ["SOURCE_DATE_EPOCH"])
            at = place + exports - begin + 4
            data[at:at + 4] = moment.to_bytes(4, "little")
    data[optional + 64:optional + 68] = bytes(4)
    total = 0
    for at in range(0, len(data) + len(data) % 2, 2):
        total += number(at, 2)
        total = (total & 0xFFFF) + (total >> 16)
    data[optional + 64:optional + 68] = (total + len(data)).to_bytes(4, "little")
    file.write_bytes(data)


if __name__ == "__main__":
    if len(sys.argv) > 2 and sys.argv[1] == "--stamp":
        for name in sys.argv[2:]:
            stamp(Path(name))
        sys.exit()
    if len(sys.argv) == 4 and sys.argv[1] == "--zip":
        archive(Path(sys.argv[2]), Path(sys.argv[3]))
    elif len(sys.argv) == 3:
        page(Path(sys.argv[1]), Path(sys.argv[2]))
    else:
        sys.exit(__doc__)
