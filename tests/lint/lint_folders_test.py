"""lint_folders_test.py LINTER: runs the linter of folders on small trees, with and without a fault."""

import os
import subprocess
import sys
import tempfile

BEGIN, END = "<!-- tree: written by scripts/lint-folders.py --write -->\n```\n", "```\n<!-- end of tree -->\n"
LINE = "src/zip/  Archives.\n"
CASES = [
    # first line of the folder's CMakeLists.txt, the tree in the page, what the linter must report
    ("# Archives.\n", LINE, []),
    ("add_library(zip)\n", "", ["src/zip/CMakeLists.txt: the first line is not"]),
    ("# Archives.\n", "", ["missing: src/zip/  Archives.", "run scripts/lint-folders.py --write"]),
    ("# Archives.\n", LINE + "src/gone/  Nothing.\n", ["src/gone/", "run scripts/lint-folders.py"]),
]

failed = 0
for first_line, tree, faults in CASES:
    with tempfile.TemporaryDirectory() as root:
        os.makedirs(os.path.join(root, "src/zip"))
        os.makedirs(os.path.join(root, "docs"))
        with open(os.path.join(root, "src/zip/CMakeLists.txt"), "w", encoding="utf-8") as file:
            file.write(first_line)
        with open(os.path.join(root, "docs/architecture.md"), "w", encoding="utf-8") as file:
            file.write(BEGIN + tree + END)
        subprocess.run(["git", "init", "-q", root], check=True)
        run = [sys.executable, sys.argv[1]]
        lines = subprocess.run(run, cwd=root, check=True, capture_output=True, text=True).stdout.splitlines()
        if len(lines) != len(faults) or any(fault not in line for fault, line in zip(faults, lines)):
            print(f"{first_line!r} {tree!r}: expected {faults}, got {lines}")
            failed += 1
        subprocess.run([*run, "--write"], cwd=root, check=True, capture_output=True)
        lines = subprocess.run(run, cwd=root, check=True, capture_output=True, text=True).stdout
        if first_line.startswith("#") and lines:
            print(f"{first_line!r}: still reported after --write: {lines}")
            failed += 1
sys.exit(1 if failed else 0)
