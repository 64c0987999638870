"""check_library.py LIBRARY DEFINITION_FILE OBJDUMP: checks that the built library exports exactly the listed names, with
the library's version if the format has versions, and that it depends only on the system, its dependencies and
libraries of this tree."""

import re
import subprocess
import sys

# The libraries that are part of Windows. Compiler runtimes (libstdc++-6.dll, libwinpthread-1.dll, ...) and zlib are not
# part of it.
WINDOWS_LIBRARIES = {
    "advapi32.dll", "comctl32.dll", "crypt32.dll", "gdi32.dll", "kernel32.dll", "mpr.dll", "msvcrt.dll", "netapi32.dll",
    "ntdll.dll", "ole32.dll", "oleaut32.dll", "propsys.dll", "psapi.dll", "rpcrt4.dll", "secur32.dll", "shell32.dll",
    "shlwapi.dll", "urlmon.dll", "user32.dll", "userenv.dll", "version.dll", "winmm.dll", "ws2_32.dll",
}
ELF_LIBRARIES = re.compile(
    r"lib(qxplatform|pcre2-16|z|minizip|stdc\+\+|gcc_s|c|m|asan|tsan|ubsan)\.so[.\d]*|ld-linux.*")
VERSION = "QXUT23_23"


def dump(objdump, option, library):
    return subprocess.run([objdump, option, library], check=True, capture_output=True, text=True).stdout


def read_dll(objdump, library):
    text = dump(objdump, "-p", library)
    table = text.split("[Ordinal/Name Pointer] Table", 1)[1].split("\n\n", 1)[0]
    names = re.findall(r"^\s*\[\s*\d+\]\s+(?:\+base\[\s*\d+\]\s+[0-9a-f]+\s+)?(\S+)$", table, re.M)
    needed = re.findall(r"DLL Name: (\S+)", text)
    return names, [name for name in needed if name.lower() not in WINDOWS_LIBRARIES]


def read_elf(objdump, library):
    names = []
    for line in dump(objdump, "-T", library).splitlines():
        fields = line.split()
        if len(fields) < 6 or "*UND*" in fields or fields[-1] == VERSION:
            continue
        names.append(fields[-1] if fields[-2] == VERSION else f"{fields[-1]} (version {fields[-2]})")
    needed = re.findall(r"^\s+NEEDED\s+(\S+)$", dump(objdump, "-p", library), re.M)
    return names, [name for name in needed if not ELF_LIBRARIES.fullmatch(name)]


def main():
    library, definition_file, objdump = sys.argv[1:]
    with open(definition_file, encoding="ascii") as file:
        lines = [line.split(";")[0].strip() for line in file.read().split("EXPORTS", 1)[1].splitlines()]
    listed = {line for line in lines if line}
    exported, strangers = (read_dll if library.endswith(".dll") else read_elf)(objdump, library)

    faults = [f"listed, but not exported: {name}" for name in sorted(listed - set(exported))]
    faults += [f"exported, but not listed: {name}" for name in sorted(set(exported) - listed)]
    faults += [f"needed, but not brought by the system: {name}" for name in strangers]
    print("\n".join(faults or [f"{len(exported)} names, as listed"]))
    return 1 if faults else 0


sys.exit(main())
