"""check_promises.py DOCUMENT: checks that every row of a table "Promise | Tests" names tests, and that each of them exists.
A test is a GoogleTest case `Suite.Name`, a method `FILE_test.test_name` of tests/tools/qxut, a fuzz target `fuzz/NAME`, or
a ctest name `faults.NAME`."""

import pathlib
import re
import sys
import unittest

DOCUMENT = pathlib.Path(sys.argv[1])
ROOT = DOCUMENT.resolve().parents[1]
ROW = re.compile(r"^\| (.+) \| (.+) \|$", re.M)


def matches(pattern, *globs):
    return {match if isinstance(match, str) else ".".join(match) for glob in globs for path in ROOT.glob(glob)
            for match in re.findall(pattern, path.read_text(encoding="utf-8"))}


def known_tests():
    tests = matches(r"(?m)^TEST(?:_[FP])?\((\w+), (\w+)\)", "tests/**/*_test.cpp")
    tests |= matches(r"add_test\(NAME (faults\.\w+)", "tests/faults/CMakeLists.txt")
    tests |= {"fuzz/" + name for name in matches(r"qx_add_fuzzer\((\w+) ", "fuzz/CMakeLists.txt")}
    for path in ROOT.glob("tests/tools/qxut/*_test.py"):
        tests |= {f"{path.stem}.{name}" for name in re.findall(r"(?m)^    def (test_\w+)\(self", path.read_text(encoding="utf-8"))}
    return tests


class Promises(unittest.TestCase):
    def test_each_names_existing_tests(self):
        known = known_tests()
        rows = [row for row in ROW.findall(DOCUMENT.read_text(encoding="utf-8")) if row[0] != "Promise"]
        self.assertGreater(len(rows), 20)
        for promise, tests in rows:
            with self.subTest(promise=promise):
                names = re.findall(r"`([^`]+)`", tests)
                self.assertTrue(names, "no test")
                self.assertEqual(set(names) - known, set(), "no such test")
                self.assertEqual(re.sub(r"`[^`]+`( \(linux\))?(, )?", "", tests), "", "something else than tests")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
