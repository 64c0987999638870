"""check_document.py DOCUMENT QXUT [--command=PROGRAM...] SOURCE=PROGRAM... [-- EMULATOR...]: runs example programs in an empty
folder and checks
that their document shows exactly the programs' code, output and files. A line before each block of the document describes
the block:

    <!-- code NAME -->    the body of the function NAME in a program
    <!-- prints NAME -->  the output of the program while that function runs; "…" stands for text that differs between
                          machines
    <!-- log -->          lines that `qxut log --show` prints after the programs ran as a developer's; "…" as above
    <!-- fragment -->     code that isn't part of a program
    <!-- file NAME -->    lines of a file written by the program; "…" stands for omitted text
    <!-- commands -->     commands after "$ ", run in that folder, followed by their output, with "…" as above: qxut and the
                          programs that --command names
    <!-- python -->       statements that must run in that folder without an exception
"""

import os
import pathlib
import re
import shlex
import subprocess
import sys
import tempfile
import textwrap
import unittest

END = sys.argv.index("--")
EMULATOR = sys.argv[END + 1:]
DOCUMENT = pathlib.Path(sys.argv[1]).read_text(encoding="utf-8")
QXUT = sys.argv[2]
EXAMPLES = [(pathlib.Path(source).read_text(encoding="utf-8"), program)
            for source, program in (example.split("=", 1) for example in sys.argv[3:END] if example[0] != "-")]
COMMANDS = {"qxut": QXUT} | {pathlib.Path(option).stem: option.removeprefix("--command=")
                             for option in sys.argv[3:END] if option.startswith("--command=")}
# Under an emulator, all programs share one set of settings, which must not be changed.
HAS_OWN_SETTINGS = not EMULATOR
BLOCK = re.compile(r"^(?:<!-- (\w+)(?: (\S+))? -->\n)?```\w*\n(.*?)^```$", re.M | re.S)
FUNCTION = re.compile(r"^(?:\[\[gnu::noinline\]\] )?void (\w+)\(\)\n\{\n(.*?)^\}$", re.M | re.S)


def run(folder, *command, **environment):
    return subprocess.run([*EMULATOR, *command], cwd=folder, check=True, capture_output=True, encoding="utf-8",
                          env=os.environ | environment).stdout


def has_gaps(block):
    """A pattern for a block in which "…" stands for any text."""
    return ".*?".join(re.escape(part) for part in block.split("…"))


def lines_of(path):
    data = path.read_bytes()
    text = data.decode("utf-16" if data.startswith(b"\xff\xfe") else "utf-8")
    return text.replace("\r\n", "\n")


class Document(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.folder = pathlib.Path(folder.name)
        cls.blocks = BLOCK.findall(DOCUMENT)
        settings = {}
        if HAS_OWN_SETTINGS and any(kind == "log" for kind, _, _ in cls.blocks):
            settings = {"QXPLATFORM_HOME": str(cls.folder / "home"), "TMPDIR": folder.name}
            run(folder.name, QXUT, "log", "on", "trace.log", **settings)
            settings["USER"] = "qvx"
        printed = []
        cls.bodies = {}
        for source, program in EXAMPLES:
            printed += re.split(r"^== (\w+)\n", run(folder.name, program, **settings), flags=re.M)[1:]
            cls.bodies |= {name: textwrap.dedent(body) for name, body in FUNCTION.findall(source)}
        cls.printed = dict(zip(printed[0::2], printed[1::2]))
        cls.log = run(folder.name, QXUT, "log", "--show", **settings) if settings else None
        cls.settings = settings

    def check_code(self, name, block):
        self.assertEqual(block, self.bodies[name])

    def check_prints(self, name, block):
        printed = self.printed[name]
        if printed.startswith("no write was seen"):
            self.skipTest("no data breakpoints on this machine")
        if "…" in block:
            self.assertRegex(printed, re.compile(r"\A" + has_gaps(block) + r"\Z", re.S))
        else:
            self.assertEqual(block, printed)

    def check_log(self, _, block):
        if not self.log:
            self.skipTest("the settings are shared")
        # Each line begins with a stamp and ends where the block's line ends, so a gap can't hide other lines.
        lines = [has_gaps(line).replace(".*?", r"[^\n]*?") for line in block.splitlines()]
        self.assertRegex(self.log, re.compile("^" + r"\n".join(lines) + "$", re.M))

    def check_fragment(self, *_):
        pass

    def check_file(self, name, block):
        self.assertRegex(lines_of(self.folder / name), re.compile("^" + has_gaps(block), re.M | re.S))

    def check_commands(self, _, block):
        for command, shown in re.findall(r"^\$ (.*)\n((?:(?!\$ ).*\n)*)", block, re.M):
            program, *arguments = shlex.split(command)
            printed = run(self.folder, COMMANDS[program], *arguments, **self.settings).replace("\r\n", "\n")
            self.assertRegex(printed, re.compile(r"\A" + has_gaps(shown) + r"\Z", re.S), command)

    def check_python(self, _, block):
        subprocess.run([sys.executable, "-c", block], cwd=self.folder, check=True)

    def test_each_block_is_true(self):
        for kind, name, block in self.blocks:
            with self.subTest(kind=kind, name=name):
                getattr(self, "check_" + kind)(name, block)

    def test_each_example_is_shown_with_what_it_prints(self):
        shown = [name for kind, name, _ in self.blocks if kind == "code"]
        self.assertEqual(shown, list(self.bodies))
        self.assertEqual([name for kind, name, _ in self.blocks if kind == "prints"], list(self.printed))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
