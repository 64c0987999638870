"""Helpers shared by the tests of the commands. Usage: `NAME_test.py COMMAND...`, where COMMAND starts qxut."""

import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

COMMAND = sys.argv[1:]
# Of a long table, one in this number of cases is tested.
EACH = int(os.environ.get("QXUT_TEST_EACH", "1"))
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
