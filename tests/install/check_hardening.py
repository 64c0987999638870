"""check_hardening.py PREFIX LIBDIR SYSTEM OBJDUMP READELF: proves from the installed files that the libraries and the
program are hardened and have their debug information in files of their own."""

import os
import re
import subprocess
import sys

MAX_SIZE = 1_500_000
MAX_SIZE_ON_WINDOWS = 2_000_000  # the library contains the C++ runtime
SWITCHES = ["-fstack-protector-strong"]
faults = []


def output(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True, errors="replace").stdout


def expect(condition, file, fault):
    if not condition:
        faults.append(f"{file}: {fault}")


def check_stripped(objdump, file, debug, max_size):
    # The windows program contains the C++ runtime too, so the limit is for libraries.
    expect("/bin/qxut" in file or os.path.getsize(file) < max_size, file, f"{os.path.getsize(file)} bytes")
    expect(".debug_info" not in output(objdump, "-h", file), file, "still has its debug information")
    has_debug = os.path.isfile(debug) and ".debug_info" in output(objdump, "-h", debug)
    expect(has_debug, file, f"no debug information: {debug}")


def check_switches(objdump, file, debug, switches):
    """Checks the compiler's options, which it records in the debug information of each unit."""
    units = re.findall(r"DW_AT_producer\s*: (.*)", output(objdump, "--dwarf=info", "--dwarf-depth=1", debug))
    own = [unit for unit in units if "GNU C++20" in unit]
    expect(own, file, "no unit of C++ in the debug information")
    for switch in switches:
        expect(all(switch in unit for unit in own), file, f"not all of it is compiled with {switch}")


def check_elf(prefix, objdump, readelf, file, function):
    headers = output(readelf, "-lW", file)
    dynamic = output(readelf, "-dW", file)
    imports = output(readelf, "--dyn-syms", "-W", file)
    expect("GNU_RELRO" in headers and re.search(r"FLAGS.*\bNOW\b", dynamic), file, "no full RELRO")
    expect(re.search(r"GNU_STACK(\s+0x\w+){5}\s+RW\s", headers), file, "executable stack")
    expect(not re.search(r"LOAD(\s+0x\w+){5}\s+RWE", headers), file, "memory that is writable and executable")
    expect("TEXTREL" not in dynamic, file, "relocations in the code")
    expect("/bin/" not in file or re.search(r"FLAGS_1.*\bPIE\b", dynamic), file, "not position-independent")
    expect("__stack_chk_fail@" in imports, file, "no stack protector")
    if "libqxUT23" not in file and "libqxct23" not in file:  # they call no functions that have checked forms
        expect(re.search(r"__(?!stack)\w+_chk@", imports), file, "no function is checked by _FORTIFY_SOURCE")
    is_arm = "AArch64" in output(readelf, "-h", file)
    if function:  # the image as a whole isn't marked, because the C library's start files aren't
        code = output(objdump, "-d", f"--disassemble={function}", file)
        expect(re.search(r"\b(paciasp|bti)\b" if is_arm else r"\bendbr64\b", code), file,
               f"{function} is no marked target of an indirect call")
    build_id = re.search(r"Build ID: (\w\w)(\w+)", output(readelf, "-n", file))
    debug = os.path.join(prefix, "lib/debug/.build-id", build_id[1], build_id[2] + ".debug")
    check_stripped(objdump, file, debug, MAX_SIZE)
    branches = "-mbranch-protection" if is_arm else "-fcf-protection"
    check_switches(objdump, file, debug, SWITCHES + ["-fstack-clash-protection", branches])


def check_pe(objdump, file):
    flags = output(objdump, "-p", file).split("DllCharacteristics", 1)[1].split("SizeOfStackReserve")[0]
    for flag in ("HIGH_ENTROPY_VA", "DYNAMIC_BASE", "NX_COMPAT"):
        expect(flag in flags, file, f"no {flag}")
    check_stripped(objdump, file, file + ".debug", MAX_SIZE_ON_WINDOWS)
    expect(".gnu_debuglink" in output(objdump, "-h", file), file, "no link to the debug information")
    check_switches(objdump, file, file + ".debug", SWITCHES)


def main():
    prefix, libdir, system, objdump, readelf = sys.argv[1:]
    if system == "Windows":
        for name in ("qxUT23.dll", "qxct23.dll", "qxut.exe"):
            check_pe(objdump, os.path.join(prefix, "bin", name))
    else:
        for name, function in ((f"{libdir}/libqxUT23.so", "ProfJobOpenA"), ("bin/qxut", ""),
                               (f"{libdir}/libqxct23.so", "CtlAbortDlgStart"),
                               (f"{libdir}/libqxplatform.so", "qxp_CreateFileW")):
            check_elf(prefix, objdump, readelf, os.path.join(prefix, name), function)
    print("\n".join(faults) or "hardened")
    return 1 if faults else 0


sys.exit(main())
