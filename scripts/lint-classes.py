"""Prints every class that one linked library defines twice under the same name outside of anonymous namespaces. The
linker keeps one destructor or inline function for both, without a message. Called by scripts/lint; reads the tree in
the current folder."""

import glob
import re

CLASS = re.compile(r"^(?:class|struct|union)\s+(?:alignas\([^)]*\)\s*)?([\w:]+)(?:\s+final)?(?:\s*:[^:;][^;]*)?$")
# Each library or program is linked from the files of one of these folders.
ROOTS = ("src", "control", "platform/src", "tools")


def named_classes(path):
    """Returns the names of the classes that a file defines at the first level of named namespaces, by line."""
    is_anonymous = False
    with open(path, encoding="utf-8") as file:
        for number, line in enumerate(file, 1):
            line = line.rstrip()
            if line == "namespace":
                is_anonymous = True
            elif line == "} // namespace":
                is_anonymous = False
            elif not is_anonymous and (match := CLASS.match(line)):
                yield match[1], number


for root in ROOTS:
    defined = {}
    for path in sorted(glob.glob(f"{root}/**/*", recursive=True)):
        # The files for windows are never linked with the files for linux, so their classes may have the same names.
        if path.endswith((".h", ".cpp")) and not path.endswith("_windows.cpp"):
            for name, number in named_classes(path):
                if name in defined:
                    print(f"{path}:{number}: {name} is also defined in {defined[name]}")
                defined.setdefault(name, f"{path}:{number}")
