"""Compares the addresses that programs captured with the frames that gdb finds: stack_gdb_test.py PROGRAM...

Exit code: 77 if gdb isn't installed or may not trace."""

import shutil
import subprocess
import sys
import tempfile

COMMANDS = """
set confirm off
set debuginfod enabled off
set backtrace past-main on
handle SIGUSR1 nostop noprint pass
set breakpoint pending on
break StopHere
run
python
frame = gdb.newest_frame()
while frame:
    if frame.type() not in (gdb.INLINE_FRAME, gdb.TAILCALL_FRAME): # guessed from debug information
        print("gdb %#x" % frame.pc())
    frame = frame.older()
end
kill
"""


def compare(program):
    with tempfile.NamedTemporaryFile("w", suffix=".gdb") as commands:
        commands.write(COMMANDS)
        commands.flush()
        result = subprocess.run(["gdb", "-batch", "-nx", "-x", commands.name, program], capture_output=True, text=True,
                                timeout=120)
    lines = [line.split() for line in result.stdout.splitlines()]
    ours = [int(line[1], 16) for line in lines if line[:1] == ["ours"]]
    gdb = [int(line[1], 16) for line in lines if line[:1] == ["gdb"]]
    if not gdb:
        print(result.stdout, result.stderr)
        return 77
    if len(ours) < 18 or ours != gdb[2:]:  # gdb also reports StopHere and the function that captured
        print(f"{program}:", "ours:", *map(hex, ours), "gdb:", *map(hex, gdb), sep="\n")
        return 1
    return 0


if not shutil.which("gdb"):
    sys.exit(77)
sys.exit(max(compare(program) for program in sys.argv[1:]))
