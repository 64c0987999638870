"""check_plain_names.py NM NEIGHBOUR LIBRARY...: proves that no library exports a name that the neighbour exports too, a
C++ name, or a name without a version; and that each exported name has the prefix of its library."""

import re
import subprocess
import sys

# Names exported by the layer have its prefix and its symbol version. Names exported by the library have only the
# library's symbol version.
FAMILY = re.compile(r"(qxp_\w+@@QXPLATFORM_23|(?!qxp_|_Z)\w+@@QXUT23_23)")


def exported(nm, library):
    lines = subprocess.run([nm, "-D", "--defined-only", "--with-symbol-versions", library], check=True,
                           capture_output=True, text=True).stdout.splitlines()
    names = [line.split()[-1] for line in lines if " A " not in line]  # the names of the versions are absolute symbols
    if len(names) < 100:
        sys.exit(f"{library}: only {len(names)} names: not the library that was meant")
    return names


def main():
    nm, neighbour, *libraries = sys.argv[1:]
    others = {name.split("@")[0] for name in exported(nm, neighbour)}
    faults = []
    for library in libraries:
        for name in exported(nm, library):
            if name.split("@")[0] in others:
                faults.append(f"{library}: {name} is exported by {neighbour} as well")
            if not FAMILY.fullmatch(name):
                faults.append(f"{library}: {name} is neither the layer's nor the library's own")
    print("\n".join(faults) or "no name in common")
    return 1 if faults else 0


sys.exit(main())
