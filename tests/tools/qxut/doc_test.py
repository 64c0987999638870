"""doc_test.py COMMAND...: tests `qxut doc`. COMMAND starts the program."""

import csv
import io
import json
import os
import pathlib
import subprocess

import commands

# The emulator shows links as their targets, and forwards a program's output only when the program ends.
IS_NATIVE = len(commands.COMMAND) == 1
PAGE = b"<head><title>%s</title><meta name=\"author\" content=\"a, \"b\"\"></head>"


class DocCommand(commands.CommandTest):
    def make(self, name, contents):
        path = self.folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(contents)
        return str(path)

    def doc(self, *arguments, code=0):
        """Returns standard output and standard error."""
        done = subprocess.run([*commands.COMMAND, "doc", *arguments], capture_output=True)
        self.assertEqual(done.returncode, code, done)
        return [text.decode().replace("\r\n", "\n") for text in (done.stdout, done.stderr)]

    def test_folders(self):
        tree = self.folder / "tree"
        for name in ["b.htm", "a/2.htm", "a/1.htm", "c.txt"]:
            self.make(tree / name, PAGE % name.encode())
        if IS_NATIVE:
            (tree / "link").symlink_to(tree / "a")
        found = [json.loads(line) for line in self.doc("--json", "--jobs", "3", str(tree))[0].splitlines()]
        self.assertEqual([(pathlib.Path(each["file"]).relative_to(tree).as_posix(), each.get("title")) for each in found],
                         [("a/1.htm", "a/1.htm"), ("a/2.htm", "a/2.htm"), ("b.htm", "b.htm"), ("c.txt", None)])
        self.assertRegex(found[3]["saved"], r"^20\d\d-\d\d-\d\d \d\d:\d\d:\d\d$")

    def test_formats(self):
        path = self.make("page.htm", PAGE % b"x\x1b[1m")
        rows = list(csv.reader(io.StringIO(self.doc("--csv", "--fields", "title,author", path)[0])))
        self.assertEqual(rows, [["title", "author"], ["x\\x1B[1m", "a, \"b\""]])
        self.assertEqual(self.doc("--fields", "title,author", path)[0], "x\\x1B[1m\ta, \"b\"\n")
        self.assertEqual(json.loads(self.doc("--json", "--fields", "author", path)[0]), {"author": "a, \"b\""})
        self.assertIn("unknown field", self.doc("--fields", "colour", path, code=2)[1])

    def test_unreadable(self):
        page = self.make("page.htm", PAGE % b"t")
        bad = self.make("bad.tif", b"no image at all")
        told, errors = self.doc("--why", "--json", bad, page, str(self.folder / "none"), code=3)
        lines = [json.loads(line) for line in told.splitlines()]
        self.assertEqual([(line.get("reader"), line.get("error")) for line in lines],
                         [("TIFF", "cannot be read"), ("HTML", None), (None, "cannot be read")])
        self.assertIn("bad magic number", lines[0]["remark"])
        self.assertIn("2 of the files cannot be read", errors)
        if os.name == "posix":
            pipe = self.folder / "pipe"
            os.mkfifo(pipe)
            self.assertIn("cannot read", self.doc(str(pipe), code=3)[1])
            self.assertIn("\tt\t", self.doc(str(self.folder), "--fields", "file,title,author", code=3)[0])

    def test_files_from(self):
        page = self.make("page.htm", PAGE % b"t")
        listing = self.make("listing", (page + "\n\n" + page + "\r\n").encode())
        self.assertEqual(self.doc("--files-from", listing, "--fields", "title")[0], "t\nt\n")
        asking = [*commands.COMMAND, "doc", "--files-from", "-", "--json"]
        if not IS_NATIVE:
            output = subprocess.run(asking, input=page.encode(), capture_output=True, check=True).stdout
            self.assertEqual(json.loads(output)["title"], "t")
            return
        with subprocess.Popen(asking, stdin=subprocess.PIPE, stdout=subprocess.PIPE) as process:
            for _ in range(2):  # each path is answered while the program waits for the next
                process.stdin.write(page.encode() + b"\n")
                process.stdin.flush()
                self.assertEqual(json.loads(process.stdout.readline())["title"], "t")
            process.stdin.close()
            self.assertEqual(process.wait(), 0)


commands.main()
