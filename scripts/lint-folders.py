"""Checks that the first line of every CMakeLists.txt describes the contents of its folder, and that the tree in
docs/architecture.md shows each folder with that line. `--write` updates the tree. Called by scripts/lint."""

import os
import re
import subprocess
import sys

PAGE = "docs/architecture.md"
BEGIN, END = "<!-- tree: written by scripts/lint-folders.py --write -->\n```\n", "```\n<!-- end of tree -->"
ROOTS = ("src", "control", "platform", "tools", "tests", "fuzz", "bench", "examples")


def folders():
    files = subprocess.run(["git", "ls-files", "--cached", "--others", "--exclude-standard", *ROOTS],
                           capture_output=True, text=True, check=True).stdout.splitlines()
    return sorted({os.path.dirname(path) for path in files
                   if os.path.basename(path) == "CMakeLists.txt" and os.path.exists(path)})


def first_line(folder):
    with open(os.path.join(folder, "CMakeLists.txt"), encoding="utf-8") as file:
        match = re.fullmatch(r"# (\S.*[.:])\s*", file.readline())
    return match and match[1]


def tree(lines):
    width = max((len(folder) for folder, _ in lines), default=0) + 3
    return "".join(f"{folder + '/':{width}}{text}\n" for folder, text in lines)


lines = []
for folder in folders():
    text = first_line(folder)
    if text is None:
        print(f"{folder}/CMakeLists.txt: the first line is not a comment of one sentence that describes the contents of the folder")
    else:
        lines.append((folder, text))

with open(PAGE, encoding="utf-8") as file:
    page = file.read()
before, _, rest = page.partition(BEGIN)
shown, _, after = rest.partition(END)
if shown != tree(lines):
    if "--write" in sys.argv:
        with open(PAGE, "w", encoding="utf-8") as file:
            file.write(before + BEGIN + tree(lines) + END + after)
    else:
        listed = set(shown.splitlines())
        for line in sorted(set(tree(lines).splitlines()) ^ listed):
            print(f"{PAGE}: {'wrong or removed' if line in listed else 'missing'}: {line}")
        print(f"{PAGE}: run scripts/lint-folders.py --write")
