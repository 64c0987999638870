"""lint_classes_test.py LINTER: runs the linter on trees of two files each, with and without a fault."""

import os
import subprocess
import sys
import tempfile

CLASS = "class ModulePaths final : public Paths\n{\n};\n"
PATHS = f"namespace qx\n{{\n\n{CLASS}\n}} // namespace qx\n"
FILE_LOCAL = f"namespace qx\n{{\nnamespace\n{{\n\n{CLASS}\n}} // namespace\n\n}} // namespace qx\n"
CASES = [
    # two files with their contents, and the place that the linter must report (empty if there is no fault)
    (("src/a/a.h", PATHS), ("src/b/b.cpp", PATHS), "src/b/b.cpp:4: ModulePaths"),
    (("src/a/a.h", PATHS), ("src/b/b.cpp", FILE_LOCAL), ""),
    (("src/a/a.cpp", FILE_LOCAL), ("src/b/b.cpp", FILE_LOCAL), ""),
    (("src/a/a.h", PATHS), ("platform/src/b/b.h", PATHS), ""),  # different libraries
    (("src/a/a.h", PATHS), ("src/b/b.h", PATHS.replace(CLASS, "class ModulePaths;\n")), ""),  # a declaration
    (("src/a/a.h", PATHS), ("src/b/b.h", PATHS.replace("ModulePaths", "Other::ModulePaths")), ""),  # a nested class
]

failed = 0
for *files, fault in CASES:
    with tempfile.TemporaryDirectory() as root:
        for path, content in files:
            os.makedirs(os.path.join(root, os.path.dirname(path)))
            with open(os.path.join(root, path), "w", encoding="utf-8") as file:
                file.write(content)
        lines = subprocess.run([sys.executable, sys.argv[1]], cwd=root, check=True, capture_output=True,
                               text=True).stdout.splitlines()
    if (len(lines) != 1 or not lines[0].startswith(fault)) if fault else lines:
        print(f"{files}: expected a report of {fault or 'nothing'}, got {lines}")
        failed += 1
sys.exit(1 if failed else 0)
