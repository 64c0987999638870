"""tidy-units.py COMPILE_COMMANDS ROOT [FILE...]: prints the units of a compile database that compile the named files, or
for a header all units of its folder; without files, every unit. Called by scripts/tidy."""

import json
import os
import re
import sys

commands, root, *files = sys.argv[1:]
folders = {os.path.dirname(name) for name in files if name.endswith((".h", ".cpp"))}

with open(commands, encoding="utf-8") as database:
    entries = json.load(database)
for entry in entries:
    unit = os.path.join(entry["directory"], entry["file"])
    if not unit.endswith((".cpp", ".cxx")) or "/googletest/" in unit or os.path.basename(unit) == "test_headers.cpp":
        continue
    sources = [unit]
    if "/Unity/" in unit:
        with open(unit, encoding="utf-8") as text:
            sources = re.findall(r'#include "(.+)"', text.read())
    if not files or any(os.path.dirname(os.path.relpath(source, root)) in folders for source in sources):
        print(unit)
