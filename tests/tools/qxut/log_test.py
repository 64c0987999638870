"""log_test.py COMMAND...: tests `qxut log`. COMMAND starts the program."""

import json
import os
import subprocess
import time
import unittest

import commands

# If the program runs under an emulator, all tests share one set of settings, which must not be changed.
HAS_OWN_SETTINGS = len(commands.COMMAND) == 1

STAMPED = "12:34:56.789 00001a2c/03 7 INIT   state 1"
TAGGED = "PROF    : 12:34:56.790 00001a2c/13f 8 WRN: x"
COUNTED = "A LONG: TAG: 34:56.789 0000000b/00 9 ERR: \u00fc\U0001F600\n\x1b[31m"


class LogCommands(commands.CommandTest):
    def setUp(self):
        super().setUp()
        self.file = self.folder / "trace.log"
        self.environment = dict(os.environ, TMPDIR=str(self.folder), QXPLATFORM_HOME=str(self.folder / "home"))

    def start(self, *arguments):
        return subprocess.Popen([*commands.COMMAND, "log", *arguments], stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                encoding="utf-8", env=self.environment)

    def qxut(self, *arguments, code=0):
        with self.start(*arguments) as process:
            out, err = process.communicate()
        self.assertEqual(process.returncode, code, out + err)
        return out if code == 0 else err

    def append(self, *lines, end="\r\n"):
        with open(self.file, "ab") as file:
            file.write("".join(line + end for line in lines).encode("utf-16-le"))

    def show(self, *arguments):
        return self.qxut("--file", str(self.file), "--show", *arguments)

    @unittest.skipUnless(HAS_OWN_SETTINGS, "the settings are shared")
    def test_the_setting(self):
        self.assertIsNone(json.loads(self.qxut("--json"))["file"])
        self.assertIn("no log", self.qxut())
        self.assertIn("no log", self.qxut("--show", code=1))
        self.qxut("on", "own.log", "--flush")
        self.assertEqual(json.loads(self.qxut("--json"))["file"], str(self.folder / "own.log"))
        self.assertTrue(json.loads(self.qxut("--json"))["flush"])
        self.qxut("on", os.path.relpath(self.file))
        where = json.loads(self.qxut("--json"))
        self.assertEqual((where["file"], where["flush"], where["time"]), (str(self.file), False, "clock"))
        # The library logs to the file that the program prints.
        texts = [json.loads(line)["text"] for line in self.qxut("--show", "--json").splitlines()]
        self.assertEqual([text[:2] for text in texts], ["++", "--"] * (len(texts) // 2) + ["++"])
        self.assertGreaterEqual(len(texts), 3)
        self.assertIn(str(self.file), self.qxut())
        self.qxut("off")
        size = self.file.stat().st_size
        self.assertIsNone(json.loads(self.qxut("--json"))["file"])
        self.assertEqual(self.file.stat().st_size, size)

    def test_lines_as_text(self):
        self.append(STAMPED, TAGGED, COUNTED)
        self.append("cut off", end="")
        self.assertEqual(self.show(), f"{STAMPED}\n{TAGGED}\n"
                         "A LONG: TAG: 34:56.789 0000000b/00 9 ERR: \u00fc\U0001F600\\n\\x1B[31m\ncut off\n")
        self.assertEqual(self.show("--last", "1"), "A LONG: TAG: 34:56.789 0000000b/00 9 ERR: "
                         "\u00fc\U0001F600\\n\\x1B[31m\ncut off\n")
        self.assertIn("no such file", self.qxut("--file", str(self.folder / "none"), "--show", code=3))
        for place in [str(self.folder)] + (["/dev/null"] if HAS_OWN_SETTINGS else []):
            for command in (["--show"], ["--follow", "--seconds", "0"]):
                self.assertIn("is not a file", self.qxut("--file", place, *command, code=3))

    def test_lines_in_colour(self):
        self.append(STAMPED, TAGGED, "no stamp")
        stamped, tagged, other = self.show("--color", "always").splitlines()
        self.assertTrue(stamped.startswith("\x1b[36m12:34:56.789\x1b[0m \x1b["), stamped)
        self.assertTrue(tagged.startswith("\x1b[1mPROF    : \x1b[0m\x1b[36m12:34:56.790\x1b[0m"), tagged)
        self.assertTrue(tagged.endswith("\x1b[33mWRN: x\x1b[0m"), tagged)
        self.assertEqual(other, "no stamp")

    def test_reports(self):
        """The lines of a report have their own nesting, inside the nesting of the log."""
        stamp = "12:34:56.789 00001a2c/03 7 "
        self.append(stamp + "        :Error: clsHeapNode['app'/'main']::FreeObjectD(0x10)\n",
                    stamp + "        : Memory overrun\n", stamp + "  [Worker]         :  deeper\n",
                    stamp + "          :Warning: deleting heap\n", stamp + "[Worker] a        :b", stamp + "       :x",
                    "        : no stamp\n")
        self.assertEqual(self.show().splitlines(), [
            stamp + "Error: clsHeapNode['app'/'main']::FreeObjectD(0x10)", stamp + "  Memory overrun",
            stamp + "  [Worker]     deeper", stamp + "  Warning: deleting heap", stamp + "[Worker] a        :b",
            stamp + "       :x", "  no stamp"])
        coloured = self.show("--color", "always").splitlines()
        self.assertTrue(coloured[0].endswith("m \x1b[31mError: clsHeapNode['app'/'main']::FreeObjectD(0x10)\x1b[0m"), coloured)
        self.assertTrue(coloured[1].endswith("\x1b[0m   Memory overrun"), coloured)
        self.assertTrue(coloured[3].endswith("\x1b[0m   \x1b[33mWarning: deleting heap\x1b[0m"), coloured)
        lines = [json.loads(line) for line in self.show("--json").splitlines()]
        self.assertEqual([(line.get("depth"), line["text"]) for line in lines[:3]], [
            (0, "Error: clsHeapNode['app'/'main']::FreeObjectD(0x10)\n"), (1, "Memory overrun\n"),
            (2, "  [Worker] deeper\n")])
        self.assertNotIn("depth", lines[4])

    def test_lines_as_json(self):
        self.append(STAMPED, TAGGED, COUNTED, "no stamp: 12:34:56.789 00001A2C/03 7 x", "no stamp: 12:34:56.789 00001a2c/zz 7")
        self.assertEqual([json.loads(line) for line in self.show("--json").splitlines()], [
            {"tag": "", "time": "12:34:56.789", "thread": 0x1A2C, "processor": 3, "digit": 7, "text": "INIT   state 1"},
            {"tag": "PROF", "time": "12:34:56.790", "thread": 0x1A2C, "processor": 0x13F, "digit": 8, "text": "WRN: x"},
            {"tag": "A LONG: TAG", "time": "34:56.789", "thread": 11, "processor": 0, "digit": 9,
             "text": "ERR: \u00fc\U0001F600\n\x1b[31m"},
            {"text": "no stamp: 12:34:56.789 00001A2C/03 7 x"}, {"text": "no stamp: 12:34:56.789 00001a2c/zz 7"}])

    def test_control_characters_are_escaped(self):
        """A logged text can't imitate another line or control the terminal."""
        self.append("a\n" + STAMPED + "\rb\x1b]0;x\x07\x7f\x9b31m\u00a0")
        shown = "a\\n" + STAMPED + "\\rb\\x1B]0;x\\x07\\x7F\\x9B31m\u00a0\n"
        self.assertEqual(self.show(), shown)
        out = self.show("--json")
        self.assertFalse(set(out[:-1]) & set(map(chr, [*range(0x20), *range(0x7F, 0xA0)])), out)
        self.assertEqual(json.loads(out), {"text": "a\n" + STAMPED + "\rb\x1b]0;x\x07\x7f\x9b31m\u00a0"})

    def test_last_lines_of_a_long_file(self):
        lines = [f"{number} " + "x" * (number * 7 % 1000) for number in range(3000)]
        self.append(*lines)
        for count in (0, 1, 25, 2999, 4000):
            self.assertEqual(self.show("--last", str(count)).splitlines(), lines[3000 - count:] if count < 3000 else lines)
        self.assertEqual(len(self.show().splitlines()), 3000)

    def follow(self, steps, expected, *arguments):
        """Runs the steps one after another while `qxut log --follow` runs. On a busy machine the program may be too slow
        to see each of them, so the test is repeated with more time before it fails."""
        for pause in (0.5, 3, 15):
            self.file.unlink(missing_ok=True)
            steps[0]()
            seconds = str(pause * (len(steps) + 1))
            with self.start("--file", str(self.file), "--follow", "--seconds", seconds, *arguments) as process:
                time.sleep(pause)
                for step in steps[1:]:
                    step()
                    time.sleep(pause)
                out, _ = process.communicate()
            if out.splitlines() == expected:
                return
        self.assertEqual(out.splitlines(), expected)

    def test_follow(self):
        self.follow([lambda: self.append(*[f"old {number}" for number in range(30)]),
                     lambda: self.append("new", "half", end=""),
                     lambda: self.append(" and half", "next"),
                     lambda: self.file.write_bytes("anew\r\n".encode("utf-16-le"))],
                    [*[f"old {number}" for number in range(10, 30)], "newhalf and half", "next", "anew"])

    def test_follow_waits_for_the_file(self):
        self.follow([lambda: None, lambda: self.append("first")], ["first"], "--last", "5")


if __name__ == "__main__":
    commands.main()
