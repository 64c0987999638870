"""check_document.py DOCUMENT SOURCE PROGRAM QXUT [EMULATOR...]: runs an example program in an empty folder and checks that
its document shows exactly the program's code, output and files. A line before each block of the document describes the
block:

    <!-- code NAME -->    the body of the function NAME in the program
    <!-- prints NAME -->  the output of the program while that function runs
    <!-- file NAME -->    lines of a file written by the program; "…" stands for omitted text
    <!-- commands -->     commands after "$ ", run in that folder, followed by their output
    <!-- python -->       statements that must run in that folder without an exception
"""

import pathlib
import re
import shlex
import subprocess
import sys
import tempfile
import textwrap
import unittest

DOCUMENT, SOURCE = (pathlib.Path(path).read_text(encoding="utf-8") for path in sys.argv[1:3])
PROGRAM, QXUT, *EMULATOR = sys.argv[3:]
BLOCK = re.compile(r"^(?:<!-- (\w+)(?: (\S+))? -->\n)?```\w*\n(.*?)^```$", re.M | re.S)
FUNCTION = re.compile(r"^void (\w+)\(\)\n\{\n(.*?)^\}$", re.M | re.S)


def run(folder, *command):
    return subprocess.run([*EMULATOR, *command], cwd=folder, check=True, capture_output=True, encoding="utf-8").stdout


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
        printed = re.split(r"^== (\w+)\n", run(folder.name, PROGRAM), flags=re.M)
        cls.printed = dict(zip(printed[1::2], printed[2::2]))
        cls.bodies = {name: textwrap.dedent(body) for name, body in FUNCTION.findall(SOURCE)}
        cls.blocks = BLOCK.findall(DOCUMENT)

    def check_code(self, name, block):
        self.assertEqual(block, self.bodies[name])

    def check_prints(self, name, block):
        self.assertEqual(block, self.printed[name])

    def check_file(self, name, block):
        pattern = ".*?".join(re.escape(part) for part in block.split("…"))
        self.assertRegex(lines_of(self.folder / name), re.compile("^" + pattern, re.M | re.S))

    def check_commands(self, _, block):
        for command, shown in re.findall(r"^\$ (.*)\n((?:(?!\$ ).*\n)*)", block, re.M):
            program, *arguments = shlex.split(command)
            self.assertEqual(program, "qxut")
            self.assertEqual(run(self.folder, QXUT, *arguments).replace("\r\n", "\n"), shown, command)

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
