"""Compares the export list with the public headers and with the names of the interface. Called by scripts/lint."""

import glob
import re

DECLARATION = re.compile(r"\bQXUT_API\b[^;{]*?\b(\w+)\s*\(", re.S)
COMMENT = re.compile(r"/\*.*?\*/|//[^\n]*|^[ \t]*#[^\n]*", re.S | re.M)


def read(path):
    with open(path, encoding="utf-8") as file:
        return file.read()


def definition_file_names(path):
    lines = [line.split(";")[0].strip() for line in read(path).split("EXPORTS", 1)[1].splitlines()]
    return [line for line in lines if line]


listed = definition_file_names("src/exports/qxUT23.def")
EXTRA = "Qx"  # the prefix of functions with their own headers, which are listed after the families

interface = [line for line in read("src/exports/interface.txt").splitlines() if line and not line.startswith("#")]
declared = {}
umbrella = read("include/qxut23/qxut23.h")
for header in sorted(glob.glob("include/qxut23/*.h")):
    for name in DECLARATION.findall(COMMENT.sub(" ", read(header))):
        if name in declared:
            print(f"{name}: declared in {declared[name]} and {header}")
        declared[name] = header
    if not header.endswith("/qxut23.h") and f"<{header.removeprefix('include/')}>" not in umbrella:
        print(f"{header}: not included by qxut23.h")

if listed != sorted(set(listed)):
    print("qxUT23.def: not in alphabetical order, or a name occurs twice")
for name in sorted(set(listed) - set(declared)):
    print(f"{name}: listed in qxUT23.def, but not declared in a public header")
for name in sorted(set(declared) - set(listed)):
    print(f"{name}: declared in {declared[name]}, but not listed in qxUT23.def")
for name in sorted(set(listed) - set(interface)):
    print(f"{name}: not a name of the interface (see interface.txt)")

for name, header in declared.items():
    if name.startswith(EXTRA) != any(other.startswith(EXTRA) for other in declared if declared[other] == header):
        print(f"{name}: declared in {header} together with functions that have the prefix {EXTRA}")
extra = [name.startswith(EXTRA) for name in interface]
if extra != sorted(extra):
    print(f"interface.txt: names with the prefix {EXTRA} before others")
