"""check_licences.py THIRD-PARTY.md SYSTEM READER FILE...: checks that the page lists every library that the files load,
and no library that none of them loads. READER is readelf for linux and objdump for windows."""

import re
import subprocess
import sys

page, system, reader, *files = sys.argv[1:]
with open(page, encoding="utf-8") as text:
    page = text.read()


def loaded(file):
    if system == "Windows":
        output = subprocess.run([reader, "-p", file], check=True, capture_output=True, text=True).stdout
        return set(re.findall(r"DLL Name: (\S+)", output))
    output = subprocess.run([reader, "-d", file], check=True, capture_output=True, text=True).stdout
    return {re.sub(r"\.so.*", ".so", name) for name in re.findall(r"\(NEEDED\).*\[(.+)\]", output)}


def listed():
    if system == "Windows":
        return set(re.findall(r"`(\w+\.dll)`", page))
    section = page.split("## linux: loaded at run time")[1].split("\n## ")[0]
    return set(re.findall(r"`([^`]+\.so)`", section))


own = {"libqxUT23.so", "libqxplatform.so", "libqxct23.so", "qxUT23.dll", "qxct23.dll"}
# The parts of the C library. Which of them are loaded depends on its version and on the processor.
always = {"libc.so", "libm.so", "libdl.so", "libpthread.so", "ld-linux-x86-64.so", "ld-linux-aarch64.so",
          "libicudata.so"}
needed = set().union(*(loaded(file) for file in files)) - own
assert needed, "the files load nothing: they can't have been read"
missing = sorted(needed - listed())
stale = sorted(listed() - needed - always)
for name in missing:
    print(f"{name}: loaded, but not listed in THIRD-PARTY.md")
for name in stale:
    print(f"{name}: listed in THIRD-PARTY.md, but nothing loads it")
sys.exit(1 if missing or stale else 0)
