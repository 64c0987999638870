"""zip_test.py COMMAND...: tests `qxut zip` and reads its archives with other programs. COMMAND starts the
program."""

import contextlib
import fcntl
import json
import os
import pathlib
import random
import signal
import subprocess
import sys
import time
import unittest
import zipfile
import zlib

import commands

ARCHIVES = commands.DATA / "zip"
FILES = {
    "plain.txt": b"a line of text\n" * 2000,
    "none": b"",
    "sub/Gr\u00f6\u00dfe.txt": b"Gr\xc3\xb6\xc3\x9fe",
    "sub/deep/\u65e5\u672c\u8a9e.bin": bytes(range(256)) * 50,
    "sub/two words": b"x",
    # More than one block of the compressor, partly incompressible.
    "sub/large": random.Random(1).randbytes(1_200_000) + b"packs well" * 100_000 + random.Random(2).randbytes(300_000),
}
ON_WINDOWS = len(commands.COMMAND) > 1  # under a wrapper
# Commands that test an archive given as the last argument.
TESTERS = [["unzip", "-tqq"], ["7zz", "t"], ["bsdtar", "-tf"], [sys.executable, "-m", "zipfile", "-t"]]


class ZipTest(commands.CommandTest):
    def setUp(self):
        super().setUp()
        self.archive = self.folder / "x.zip"
        self.out = self.folder / "out"

    def qxut(self, *arguments, **options):
        return self.run_qxut("zip", *map(str, arguments), **options).decode().replace("\r\n", "\n")

    def write(self, **contents):
        with zipfile.ZipFile(self.archive, "w") as archive:
            for name, content in contents.items():
                archive.writestr(name, content)


class ZipCommands(ZipTest):
    def setUp(self):
        super().setUp()
        self.tree = self.folder / "tree"
        for name, content in FILES.items():
            path = self.tree / name
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_bytes(content)
            os.utime(path, (1720960496, 1720960496))

    def files_below(self, folder):
        return {path.relative_to(folder).as_posix(): path.read_bytes()
                for path in pathlib.Path(folder).rglob("*") if path.is_file()}

    def test_create_and_extract(self):
        told = json.loads(self.qxut("create", self.archive, self.tree, "--comment", "a comment", "--json"))
        size = sum(map(len, FILES.values()))
        self.assertEqual(told, {"archive": str(self.archive), "files": len(FILES), "bytes": size,
                                "size": os.path.getsize(self.archive)})
        with zipfile.ZipFile(self.archive) as archive:
            self.assertEqual(archive.comment, b"a comment")
            self.assertEqual({name: archive.read(name) for name in archive.namelist()},
                             {"tree/" + name: content for name, content in FILES.items()})
        self.assertEqual(json.loads(self.qxut("extract", self.archive, self.out, "--json")),
                         {"archive": str(self.archive), "folder": str(self.out), "files": len(FILES), "bytes": size})
        self.assertEqual(self.files_below(self.out / "tree"), FILES)
        self.assertEqual(int(os.path.getmtime(self.out / "tree/plain.txt")), 1720960496)

    def test_a_create_that_fails_leaves_the_archive(self):
        self.qxut("create", "x.zip", "tree", cwd=self.folder)
        before = pathlib.Path(self.archive).read_bytes()
        self.assertIn("is the archive itself", self.qxut("create", "x.zip", ".", code=3, cwd=self.folder))
        self.assertIn("has the same name", self.qxut("create", "x.zip", "tree", "tree", code=3, cwd=self.folder))
        self.assertEqual(pathlib.Path(self.archive).read_bytes(), before)
        self.assertEqual(sorted(path.name for path in self.folder.iterdir()), ["tree", "x.zip"])

    def test_unicode_paths(self):
        def field(name, path):
            content = b"\x01" + zlib.crc32(name.encode()).to_bytes(4, "little") + path.encode()
            return b"up" + len(content).to_bytes(2, "little") + content
        with zipfile.ZipFile(self.archive, "w") as archive:
            for name, extra in (("Gr__e.txt", field("Gr__e.txt", "Gr\u00f6\u00dfe.txt")),
                                ("renamed.txt", field("old.txt", "\u65e5.txt")), ("plain.txt", b"")):
                info = zipfile.ZipInfo(name)
                info.extra, info.create_system = extra, 3
                archive.writestr(info, name)
        expected = {"Gr\u00f6\u00dfe.txt": b"Gr__e.txt", "renamed.txt": b"renamed.txt", "plain.txt": b"plain.txt"}
        self.qxut("extract", self.archive, self.out)
        self.assertEqual(self.files_below(self.out), expected)
        self.assertEqual({entry["name"] for entry in json.loads(self.qxut("list", self.archive, "--json"))},
                         set(expected))
        # unzip returns code 1 because of the field with the wrong checksum.
        done = subprocess.run(["unzip", "-q", self.archive, "-d", self.folder / "unzip"], capture_output=True,
                              env=dict(os.environ, LC_ALL="C.UTF-8"))
        self.assertLessEqual(done.returncode, 1, done)
        self.assertEqual(self.files_below(self.folder / "unzip"), expected)

    def test_empty_folders(self):
        for name in ("tree/empty", "tree/a/b/c", "alone"):
            (self.folder / name).mkdir(parents=True)
        told = json.loads(self.qxut("create", self.archive, "tree/", "alone", "--json", cwd=self.folder))
        self.assertEqual(told["files"], len(FILES))
        entries = [entry for entry in zipfile.ZipFile(self.archive).infolist() if entry.is_dir()]
        self.assertEqual([entry.filename for entry in entries], ["tree/a/b/c/", "tree/empty/", "alone/"])
        mode = (self.folder / "alone").stat().st_mode
        self.assertTrue(ON_WINDOWS or entries[2].external_attr >> 16 == mode, oct(mode))
        self.qxut("extract", self.archive, self.out)
        for name in ("tree/empty", "tree/a/b/c", "alone"):
            self.assertEqual(list((self.out / name).iterdir()), [])
        self.qxut("create", self.archive, ".", cwd=self.folder / "alone")
        self.assertEqual(zipfile.ZipFile(self.archive).namelist(), [])

    def test_other_programs_read_our_archives(self):
        self.qxut("create", self.archive, self.tree)
        for tester in TESTERS:
            done = subprocess.run([*tester, self.archive], capture_output=True, env=dict(os.environ, LC_ALL="C.UTF-8"))
            self.assertEqual(done.returncode, 0, done)

    def test_names_of_single_files(self):
        for path, name in (("tree/plain.txt", "tree/plain.txt"), ("./tree/none", "tree/none"),
                           ("../" + self.folder.name + "/tree/none", "none"), (self.tree / "none", "none")):
            self.qxut("create", self.archive, path, cwd=self.folder)
            self.assertEqual(zipfile.ZipFile(self.archive).namelist(), [name])

    def test_list(self):
        entries = {entry["name"]: entry for entry in json.loads(self.qxut("list", ARCHIVES / "infozip-zip64.zip", "--json"))}
        self.assertEqual(entries["plain.txt"], {
            "name": "plain.txt", "size": 2030, "packed": 175, "method": "deflate", "modified": "2024-07-14 12:34:56",
            "folder": False, "encrypted": False})
        self.assertEqual(sorted(entries), ["empty/", "none", "plain.txt", "sub/", "sub/Gr\u00f6\u00dfe.txt",
                                           "sub/\u65e5\u672c\u8a9e/", "sub/\u65e5\u672c\u8a9e/\u00fc.txt"])
        with zipfile.ZipFile(self.archive, "w") as archive:
            info = zipfile.ZipInfo("a\x1b[31m", (1999, 12, 31, 23, 59, 58))
            archive.writestr(info, b"12345")
        self.assertEqual(self.qxut("list", self.archive),
                         "           5  stored     1999-12-31 23:59:58  a\\x1B[31m\n1 file, 5 bytes\n")
        self.write()
        self.assertEqual(self.qxut("list", self.archive), "0 files, 0 bytes\n")
        self.assertEqual(self.qxut("extract", self.archive, self.out), f"{self.out}: 0 files, 0 bytes\n")

    def test_errors_name_file_and_reason(self):
        (self.folder / "text").write_text("no archive")
        missing = str(self.folder / "missing")
        for command, code, reason in (
                (("list", missing), 3, "no such file"), (("list", self.folder), 3, "is a folder"),
                (("list", self.folder / "text"), 4, "is not a ZIP archive"),
                (("extract", missing, self.out), 3, "no such file"),
                (("extract", ARCHIVES / "infozip-encrypted.zip", self.out), 4, "'plain.txt' is encrypted"),
                (("create", self.archive, missing), 3, "no such file"),
                (("create", self.folder / "no/x.zip", self.tree), 6, "cannot create the archive"),
                (("create", self.archive), 2, "PATH"), (("extract", self.archive), 2, "FOLDER")):
            self.assertIn(reason, self.qxut(*command, code=code))
        self.assertFalse(os.path.exists(self.archive))
        bad = ["../evil", "/etc/evil", "b" * 300]
        self.write(**{name: "1" for name in ("first", *bad, "last")})
        error = self.qxut("extract", self.archive, self.out, code=4)
        self.assertIn("'../evil' leads out of the folder", error)
        self.assertEqual(error.count("qxut: "), len(bad), error)
        for name in bad:
            self.assertIn(f"'{name}'", error)
        self.assertEqual(self.files_below(self.out), {"first": b"1", "last": b"1"})
        self.assertFalse((self.folder / "evil").exists())

    @unittest.skipIf(len(commands.COMMAND) > 1, "a terminal of the other system isn't at hand")
    def test_progress_on_a_terminal(self):
        import pty
        for arguments in (("create", self.archive, self.tree), ("extract", self.archive, self.out)):
            ours, theirs = pty.openpty()
            done = subprocess.run([*commands.COMMAND, "zip", *map(str, arguments)], stdout=subprocess.PIPE, stderr=theirs)
            os.close(theirs)
            shown = b""
            with open(ours, "rb", buffering=0) as terminal, contextlib.suppress(OSError):  # EIO at the end
                while part := terminal.read(65536):  # a read may return less than there is
                    shown += part
            shown = shown.decode()
            self.assertEqual(done.returncode, 0)
            self.assertIn("[" + 30 * "=" + "] 100%", shown)
            self.assertTrue(shown.endswith("\r\x1b[K"), "the line is empty at the end")


@unittest.skipIf(ON_WINDOWS, "files have no modes, links and pipes there")
class PosixArchives(ZipTest):
    def setUp(self):
        super().setUp()
        self.temp = self.folder / "temp"
        self.temp.mkdir()

    def test_names_modes_and_links_come_back(self):
        tree = self.folder / "tree"
        (tree / "sub").mkdir(parents=True)
        modes = {"aux": 0o644, "AUX": 0o600, "what?": 0o755, "a:b": 0o640, "end.": 0o444, "back\\slash": 0o644,
                 "Gr\u00f6\u00dfe": 0o644, "sub/NUL.txt": 0o644}
        for name, mode in modes.items():
            (tree / name).write_text(name)
            (tree / name).chmod(mode)
        links = {"sub/up": "../aux", "here": ".", "gone": "nothing"}
        for name, target in links.items():
            (tree / name).symlink_to(target)
        (self.folder / "outside").write_text("from outside")
        (tree / "out").symlink_to("../../outside")
        (tree / "sub/absolute").symlink_to("/nowhere/at/all")
        os.chmod(tree / "aux", 0o6755)
        modes["aux"] = 0o755
        (self.folder / "deep").mkdir()
        tree = tree.rename(self.folder / "deep/tree")
        error = self.qxut("create", self.archive, "deep/tree", code=3, cwd=self.folder)
        self.assertIn("sub/absolute: is a link", error)
        (tree / "sub/absolute").unlink()
        self.qxut("create", self.archive, "deep/tree", cwd=self.folder)
        readers = {"qxut": [*commands.COMMAND, "zip", "extract", self.archive, self.out / "qxut"],
                   "unzip": ["unzip", "-q", self.archive, "-d", self.out / "unzip"],
                   "bsdtar": ["bsdtar", "-xf", self.archive, "-C", self.out / "bsdtar"],
                   "7zz": ["7zz", "x", "-bso0", self.archive, f"-o{self.out / '7zz'}"]}
        for reader, command in readers.items():
            (self.out / reader).mkdir(parents=True)
            done = subprocess.run(command, env=dict(os.environ, LC_ALL="C.UTF-8"), capture_output=True)
            # 7zz reports every link whose target contains a dot as dangerous.
            self.assertTrue(done.returncode == 0 or reader == "7zz", done)
            root = self.out / reader / "deep/tree"
            for name, mode in modes.items():
                if reader == "7zz" and "\\" in name:
                    continue  # this program replaces backslashes
                self.assertEqual((root / name).read_text(), name, reader)
                self.assertEqual((root / name).stat().st_mode & 0o7777, mode & ~self.mask(), (reader, name))
            for name, target in links.items():
                self.assertTrue(reader == "7zz" or os.readlink(root / name) == target, (reader, name))
            self.assertEqual((root / "out").read_text(), "from outside")
        self.qxut("extract", self.archive, self.out / "none", "--no-links")
        self.assertFalse(os.path.lexists(self.out / "none/deep/tree/here"))
        self.assertTrue((self.out / "none/deep/tree/a:b").exists())

    @staticmethod
    def mask():
        mask = os.umask(0)
        os.umask(mask)
        return mask

    def test_many_files_with_few_open(self):
        tree = self.folder / "many"
        tree.mkdir()
        for number in range(1500):
            (tree / str(number)).write_text(str(number))
        import resource
        done = subprocess.run([*commands.COMMAND, "zip", "create", self.archive, tree], capture_output=True,
                              preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_NOFILE, (32, 32)))
        self.assertEqual(done.returncode, 0, done)
        with zipfile.ZipFile(self.archive) as archive:
            self.assertEqual(len(archive.namelist()), 1500)
            self.assertIsNone(archive.testzip())

    def running_on_a_large_file(self):
        """Starts a create and then an extract, and yields each program when it has begun to write."""
        large = self.folder / "large"
        if not large.exists():
            large.write_bytes(random.Random(1).randbytes(1 << 20) * 120)
            self.qxut("create", self.archive, large)
        before = self.archive.read_bytes()
        for arguments in (("create", self.archive, large), ("extract", self.archive, self.out)):
            # A shell starts programs in the background with SIGINT ignored, and qxut leaves it ignored.
            program = subprocess.Popen([*commands.COMMAND, "zip", *map(str, arguments)], stdout=subprocess.DEVNULL,
                                       stderr=subprocess.PIPE, env=dict(os.environ, TMPDIR=str(self.temp)),
                                       preexec_fn=lambda: signal.signal(signal.SIGINT, signal.SIG_DFL))
            with program:
                while not (any(self.out.glob("*")) if arguments[0] == "extract" else any(self.temp.rglob("_23_*"))):
                    self.assertIsNone(program.poll())
                    time.sleep(0.01)
                yield program
            self.assertEqual({path for path in self.folder.rglob("*") if path.is_file()}, {self.archive, large})
            self.assertTrue(self.archive.read_bytes() == before)

    def test_interrupted(self):
        for number, code in ((signal.SIGINT, 130), (signal.SIGTERM, 143), (signal.SIGHUP, 129)):
            for program in self.running_on_a_large_file():
                for path in self.temp.rglob("*"):
                    self.assertEqual(path.stat().st_mode & 0o077, 0, "for the user alone")
                program.send_signal(number)
                self.assertEqual(program.wait(20), code, program.args)

    def test_a_second_signal_leaves_nothing_either(self):
        for program in self.running_on_a_large_file():
            for number in (signal.SIGINT, signal.SIGTERM, signal.SIGINT):
                program.send_signal(number)
            self.assertIn(program.wait(20), (130, 143), program.args)

    def test_what_a_killed_process_left_is_removed(self):
        source = self.folder / "source"
        source.write_bytes(b"x")
        dead = subprocess.Popen(["true"])
        dead.wait()
        names = {name: self.folder / f"x.zip.{pid}-{number}.part" for number, (name, pid) in enumerate(
            (("stale", dead.pid), ("locked", dead.pid), ("new", os.getpid()), ("old", os.getpid())))}
        for path in (*names.values(), self.folder / "x.zip.part"):
            path.write_text("")
        os.utime(names["old"], (1, 1))
        with open(names["locked"], "r+b") as locked:  # as by a process in another container
            fcntl.lockf(locked, fcntl.LOCK_EX)
            self.qxut("create", self.archive, ".", cwd=self.folder)
        self.assertEqual({name for name, path in names.items() if path.exists()}, {"locked", "new"})
        with zipfile.ZipFile(self.archive) as archive:
            self.assertEqual(archive.namelist(), ["source", "temp/", "x.zip.part"])

    def test_pipes_and_devices(self):
        pipe = self.folder / "tree/pipe"
        pipe.parent.mkdir()
        os.mkfifo(pipe)
        for command in (("list", pipe), ("extract", pipe, self.out), ("create", self.archive, pipe)):
            self.assertRegex(self.qxut(*command, code=3), "is (a pipe or a device|not a file)")
        self.assertIn("tree/pipe: is a pipe", self.qxut("create", self.archive, "tree", code=3, cwd=self.folder))
        for target in (pipe, "/dev/null", self.folder):
            self.assertIn("is not a file", self.qxut("create", target, __file__, code=6))
        self.assertTrue(pipe.is_fifo())
        self.write(pipe="content", name="new")
        self.out.mkdir()
        os.mkfifo(self.out / "pipe")
        (self.folder / "other").write_text("old")
        os.link(self.folder / "other", self.out / "name")
        self.qxut("extract", self.archive, self.out)
        self.assertEqual((self.out / "pipe").read_text() + (self.out / "name").read_text(), "contentnew")
        self.assertEqual((self.folder / "other").read_text(), "old", "another name of the file keeps its content")

    def test_an_archive_that_becomes_a_pipe(self):
        """Another process keeps exchanging the archive for a pipe, also between the check and the opening."""
        self.write(name="content")
        os.mkfifo(self.folder / "pipe")
        exchange = ("import ctypes, sys\n"
                    "exchange = ctypes.CDLL(None).renameat2\n"
                    "while True: exchange(-100, sys.argv[1].encode(), -100, sys.argv[2].encode(), 2)")
        with subprocess.Popen([sys.executable, "-c", exchange, self.archive, self.folder / "pipe"]) as other:
            self.addCleanup(other.kill)
            codes = {subprocess.run([*commands.COMMAND, "zip", "list", self.archive], capture_output=True,
                timeout=20).returncode for _ in range(60)}
            other.kill()
        self.assertEqual(codes, {0, 3})

    def test_names_that_are_not_utf8(self):
        tree = self.folder / "tree"
        tree.mkdir()
        (tree / "good").touch()
        with open(os.fsencode(tree) + b"/bad\xff", "w"):
            error = self.qxut("create", self.archive, "tree", code=3, cwd=self.folder)
        self.assertRegex(error, "tree/bad.*: its name is not UTF-8")
        self.assertEqual(zipfile.ZipFile(self.archive).namelist(), ["tree/good"])


if __name__ == "__main__":
    commands.main()
