"""Prints every declaration by which a name of the system could be exported without the layer's prefix. Called by
scripts/lint; reads the tree in the current folder."""

import glob
import re

COMMENT = re.compile(r"/\*.*?\*/|//[^\n]*", re.S)
DIRECTIVE = re.compile(r"^[ \t]*#(?:[^\n]*\\\n)*[^\n]*", re.M)
# Matches the declaration of a function or constant of the layer, up to its semicolon, with the macro at its end. Inline
# functions aren't exported.
LAYER = re.compile(
    r"\b(?:(?:WINAPI|__cdecl)\s+(\w+)\s*\([^;{]*?\)|EXTERN_C\s+const\s+\w+\s+(\w+))\s*(?:QXP\(\s*(\w+)\s*\))?\s*;")
# Matches the declarations of system functions in the public headers in the same way.
PUBLIC = re.compile(
    r"\bQXUT_SYSTEM_API\([^)]*\)\s*(\w+)\s*\([^;{]*?\)()\s*(?:QXUT_SYSTEM\(\s*(\w+)\s*\))?\s*;")
VISIBLE = re.compile(r'visibility\s*\(\s*"default"')


def read(path):
    with open(path, encoding="utf-8") as file:
        return file.read()


def check_declarations(folder, pattern, macro):
    for header in sorted(glob.glob(f"{folder}/*.h")):
        text = DIRECTIVE.sub(" ", COMMENT.sub(" ", read(header)))
        for function, constant, label in pattern.findall(text):
            name = function or constant
            if label != name:
                print(f"{header}: the declaration of {name} must end with {macro}({name})")


def check_visibility():
    """Only the two macros make a name visible, so that none can be exported past them."""
    for path in sorted(glob.glob("platform/**/*", recursive=True) + glob.glob("src/**/*", recursive=True)):
        if path.endswith((".h", ".c", ".cpp")) and path != "platform/include/minwindef.h" and VISIBLE.search(read(path)):
            print(f"{path}: makes a name visible without the macro that gives it a link name")


check_declarations("platform/include", LAYER, "QXP")
check_declarations("include/qxut23", PUBLIC, "QXUT_SYSTEM")
check_visibility()
