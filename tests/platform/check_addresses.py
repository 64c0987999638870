"""check_addresses.py READER IMAGE: compares the reader's functions and lines for 1,000 addresses of an image with those
of other tools. Then compares its results for copies of the image, whose debug information is elsewhere, compressed or
missing, with its results for the image."""

import collections
import os
import random
import re
import select
import shutil
import socket
import subprocess
import sys
import tempfile

READER, IMAGE = sys.argv[1:]
NEITHER = "??"


def run(*command, **environment):
    return subprocess.run(command, check=True, capture_output=True, text=True,
                          env=os.environ | environment).stdout.splitlines()


def functions_of_image():
    """Returns the names of all functions that have a symbol, by begin and size. The linker drops the symbols of some
    duplicates, and functions with the same code may share an address."""
    functions = collections.defaultdict(set)
    for line in run("readelf", "-sW", IMAGE):
        fields = line.split()
        if len(fields) > 7 and fields[3] == "FUNC" and fields[6] != "UND" and int(fields[2], 0) > 0:
            functions[int(fields[1], 16), int(fields[2], 0)].add(fields[7])
    return functions


def same_function(name):
    """Returns a common name for the two names of a constructor or destructor, for a function and its parts, whose names
    have suffixes, and for functions with the same code."""
    whole = name.split(".")[0]
    return shared_places.get(whole, re.sub(r"([CD])[12]([EIv])", r"\1x\2", whole))


random.seed(15)
functions_by_place = functions_of_image()
shared_places = {name: place for place, names in functions_by_place.items() if len(names) > 1 for name in names}
ranges = sorted(functions_by_place)
addresses = [hex(begin + random.randrange(size))
             for begin, size in random.choices(ranges, [size for _, size in ranges], k=1000)]

lines = run(READER, IMAGE, *addresses)
assert lines[0] == "7 " + os.path.basename(IMAGE).split(".so")[0] + " ", lines[0]
own = [line.split("\t") for line in lines[1:]]
assert len(own) == len(addresses)

symbols = run("llvm-symbolizer", "--no-inlines", "--functions=linkage", "--no-demangle", "--obj=" + IMAGE, *addresses)
symbols = symbols[0::3] if shutil.which("llvm-symbolizer") else []
sources = run("addr2line", "-e", IMAGE, *addresses)
functions = lines_equal = known = 0
for index, (symbol, line) in enumerate(own):
    source = sources[index].split(" (discriminator")[0]
    if source.startswith("??") or source.endswith((":?", ":0")):
        continue
    known += 1
    lines_equal += os.path.basename(source) == os.path.basename(line)
    functions += same_function(symbol) == same_function(symbols[index])
print(f"{known} of 1000 addresses have a line; {lines_equal} lines and {functions} functions are equal")
assert known > 900 and functions == known and lines_equal >= known - 10

with tempfile.TemporaryDirectory() as folder, socket.socket() as server:
    # A server of debug information that the reader must not contact.
    server.bind(("127.0.0.1", 0))
    server.listen()
    url = f"http://127.0.0.1:{server.getsockname()[1]}"

    def check(name, expected_type, expect_lines, **environment):
        got = run(READER, os.path.join(folder, name), *addresses, DEBUGINFOD_URLS=url, **environment)
        assert got[0].startswith(f"{expected_type} "), f"{name}: {got[0]}"
        for index, line in enumerate(got[1:]):
            symbol, source = line.split("\t")
            if expect_lines:
                assert [symbol, source] == own[index], f"{name}: {addresses[index]}: {line} instead of {own[index]}"
            else:
                assert source == NEITHER + ":0", f"{name}: {line}"
                assert expected_type == 4 or same_function(symbol) == same_function(own[index][0]), f"{name}: {line} instead of {own[index]}"
                # An image with only dynamic symbols has few names, but no wrong ones.
                assert symbol in (NEITHER, own[index][0]) or same_function(symbol) == same_function(own[index][0]), line

    def copy(name, *options):
        run("objcopy", *options, IMAGE, os.path.join(folder, name))

    os.makedirs(os.path.join(folder, "elsewhere"))
    copy("elsewhere/probe.debug", "--only-keep-debug")
    link = "--add-gnu-debuglink=" + os.path.join(folder, "elsewhere/probe.debug")
    copy("stripped.so", "--strip-debug", link)
    copy("bare.so", "--strip-all", link)
    copy("compressed.so", "--compress-debug-sections=zlib")
    check("stripped.so", 6, False)
    check("bare.so", 4, False)
    check("compressed.so", 7, True)
    check("bare.so", 7, True, SYMBOL_FOLDERS=os.path.join(folder, "elsewhere"))

    build_id = next(re.search("Build ID: (.*)", line).group(1) for line in run("readelf", "-n", IMAGE)
                    if "Build ID" in line)
    os.makedirs(os.path.join(folder, "ids/.build-id", build_id[:2]))
    shutil.copy(os.path.join(folder, "elsewhere/probe.debug"),
                os.path.join(folder, "ids/.build-id", build_id[:2], build_id[2:] + ".debug"))
    check("bare.so", 7, True, SYMBOL_FOLDERS=".;" + os.path.join(folder, "ids"))
    shutil.copy(os.path.join(folder, "elsewhere/probe.debug"), folder)
    check("bare.so", 7, True)

    # The symbols of .gnu_debugdata, which distributions embed in stripped files.
    copy("mini.debug", "--only-keep-debug", "--strip-debug")
    run("xz", os.path.join(folder, "mini.debug"))
    copy("mini.so", "--strip-all", "--add-section=.gnu_debugdata=" + os.path.join(folder, "mini.debug.xz"))
    check("mini.so", 6, False)

    # A file of another build doesn't count, whatever its name.
    with open(os.path.join(folder, "probe.debug"), "r+b") as file:
        content = file.read()
        place = content.index(bytes.fromhex(build_id))
        file.seek(place)
        file.write(b"\0" * 4)
    check("bare.so", 4, False)

    assert not select.select([server], [], [], 0)[0], "a server was asked"
