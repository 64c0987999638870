"""Helpers shared by the tests of the commands. Usage: `NAME_test.py COMMAND...`, where COMMAND starts qxut."""

import pathlib
import subprocess
import sys
import tempfile
import unittest

COMMAND = sys.argv[1:]
# A process takes a second to start in the emulator. Of long tables that don't depend on the target, each fifth case is
# enough there.
EACH = 5 if COMMAND[-1].endswith(".exe") else 1
DATA = pathlib.Path(__file__).parents[2] / "data"


class CommandTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def run_qxut(self, *arguments, code=0, stdin=b"", cwd=None, out=b""):
        """Returns the output of qxut as bytes: standard output on success, standard error otherwise. `out` is the standard
        output that a failing command must have."""
        done = subprocess.run([*COMMAND, *arguments], input=stdin, capture_output=True, cwd=cwd)
        self.assertEqual(done.returncode, code, done)
        if code != 0:
            self.assertEqual(done.stdout.replace(b"\r\n", b"\n"), out)
            self.assertTrue(done.stderr.startswith(b"qxut: ") or code == 2, done.stderr)
        return done.stdout if code == 0 else done.stderr


def main():
    unittest.main(argv=sys.argv[:1])
