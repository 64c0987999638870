"""profile_test.py COMMAND...: tests `qxut profile`. COMMAND starts the program."""

import base64
import itertools
import json
import os
import pathlib
import pty
import resource
import shutil
import subprocess
import termios
import time
import unittest
import zlib
from xml.etree import ElementTree

import commands

XML_HEAD = '<?xml version="1.0" encoding="UTF-16" standalone="yes"?>\n'
FORMS = commands.DATA / "forms"
SETTINGS = commands.DATA / "settings"
ENCODINGS = ("utf-8-sig", "utf-16")[::commands.EACH]


class ProfileCommands(commands.CommandTest):
    def setUp(self):
        super().setUp()
        self.file = self.write("file", "[/]\r\na=1\r\n[l]\r\nb=2\r\nb=3\r\n}\r\n[l]\r\nb=4\r\n}\r\nc=x\u240D\u240Ay\u241B[31m")

    def write(self, name, text):
        path = self.folder / name
        path.write_bytes(text.encode("utf-16"))
        return str(path)

    def qxut(self, *arguments, code=0):
        return self.run_qxut("profile", *arguments, code=code).decode().replace("\r\n", "\n")

    def show(self, path=None):
        return self.qxut("show", path or self.file)

    def test_show_as_text(self):
        self.assertEqual(self.show(), "a = 1\n[l]\n  b = 2\n  b = 3\n[l]\n  b = 4\nc = x\\r\\ny\\x1B[31m\n",
                         "what would steer a terminal is shown instead")
        self.assertEqual(self.qxut("show", self.file, "--list", "l"), "b = 2\nb = 3\n")
        self.assertIn("no list 'm'", self.qxut("show", self.file, "--list", "m", code=1))

    def test_show_as_json(self):
        self.assertEqual(json.loads(self.qxut("show", self.file, "--json")), [
            {"name": "a", "value": "1"},
            {"name": "l", "list": [{"name": "b", "value": "2"}, {"name": "b", "value": "3"}]},
            {"name": "l", "list": [{"name": "b", "value": "4"}]},
            {"name": "c", "value": "x\r\ny\x1b[31m"}])
        nothing = self.write("nothing", "[/]\n[l]\n[m]\n")
        self.assertEqual(json.loads(self.qxut("show", nothing, "--json")),
                         [{"name": "l", "list": [{"name": "m", "list": []}]}])
        self.assertEqual(json.loads(self.qxut("show", nothing, "--list", "l/m", "--json")), [])

    def test_get(self):
        self.assertEqual(self.qxut("get", self.file, "--path", "l/b"), "2\n")
        self.assertEqual(self.qxut("get", self.file, "--list", "l", "--path", "b"), "2\n")
        self.assertEqual(self.qxut("get", self.file, "--path", "l/x", "--default", "-"), "-\n")
        self.assertEqual(json.loads(self.qxut("get", self.file, "--path", "c", "--json")),
                         {"path": "c", "value": "x\r\ny\x1b[31m", "found": True})
        self.assertIn("no value 'l/x'", self.qxut("get", self.file, "--path", "l/x", code=1))

    def test_set_and_append(self):
        self.qxut("set", self.file, "--path", "l/b", "new")
        self.qxut("set", self.file, "--list", "l", "--path", "m/n", "--", "-5")
        self.qxut("append", self.file, "--path", "a", "again")
        self.qxut("append", self.file, "--path", "l", "--new-list")
        self.assertEqual(self.show(), "a = 1\n[l]\n  b = new\n  b = 3\n  [m]\n    n = -5\n[l]\n  b = 4\n"
                                      "c = x\\r\\ny\\x1B[31m\na = again\n[l]\n")
        self.qxut("set", str(self.folder / "none"), "--path", "a", "1", "--create")
        self.assertEqual(self.show(str(self.folder / "none")), "a = 1\n")

    def test_typed_values(self):
        # type, input, text in the file, output
        for kind, given, text, back in [
                ("bool", "true", "TRUE", True), ("int", "-5", "-5", -5), ("int", "0xff", "255", 255),
                ("int-hex", "255", "xff", 255), ("int64", "-1", "18446744073709551615", -1),
                ("int64-hex", "0xffffffffff", "xffffffffff", 0xffffffffff), ("double", "1.5", "1.500000", 1.5),
                ("point", "3,-4", "(3,-4)", [3, -4]), ("rect", "1,2,30,40", "(1,2,30,40)", [1, 2, 30, 40]),
                ("rect-ltwh", "1,2,31,42", "(1,2,30,40)", [1, 2, 31, 42]),
                ("color", "#112233", "(17,34,51)", "#112233")][::commands.EACH]:
            with self.subTest(kind, given=given):
                self.qxut("set", self.file, "--path", "v", "--type", kind, "--", given)
                self.assertEqual(self.qxut("get", self.file, "--path", "v"), text + "\n")
                shown = self.qxut("get", self.file, "--path", "v", "--type", kind)
                self.qxut("set", self.file, "--path", "w", "--type", kind, "--", shown.rstrip())
                self.assertEqual(self.qxut("get", self.file, "--path", "w"), text + "\n", "what get prints, set reads")
                self.assertEqual(json.loads(self.qxut("get", self.file, "--path", "v", "--type", kind, "--json")),
                                 {"path": "v", "value": back, "found": True})
        self.qxut("append", self.file, "--path", "h", "--type", "int-hex", "255")
        self.assertEqual(self.qxut("get", self.file, "--path", "h"), "x000000FF\n")

        self.assertIn("not of the type point", self.qxut("get", self.file, "--path", "a", "--type", "point", code=1))
        self.assertEqual(self.qxut("get", self.file, "--path", "none", "--type", "int", "--default", "7"), "7\n")
        before = self.show()
        for kind, given in [("int", "1x"), ("int", "2147483648"), ("bool", "yes"), ("point", "1,2,3"), ("rect", "1,2,3"),
                            ("color", "red"), ("double", ""), ("double", "nan"), ("double", "1e190"), ("number", "1")][::commands.EACH]:
            with self.subTest(kind, given=given):
                self.qxut("set", self.file, "--path", "v", "--type", kind, given, code=2)
        self.assertEqual(self.show(), before)
        missing = self.folder / "missing"
        self.qxut("set", str(missing), "--path", "v", "--type", "int", "--create", "x", code=2)
        self.assertFalse(missing.exists())

    def test_output_leaves_the_file_alone(self):
        source = self.folder / "python.desktop"
        shutil.copy(SETTINGS / "python3.11.desktop", source)
        before = source.read_bytes()
        self.assertEqual(json.loads(self.qxut("set", str(source), "--path", "Type", "Changed", "--json",
                                              "--output", str(self.folder / "out"))),
                         {"file": str(self.folder / "out"), "changed": 1})
        self.assertEqual(source.read_bytes(), before)
        self.assertEqual(self.qxut("get", str(self.folder / "out"), "--path", "Type"), "Changed\n")

    def test_changes_in_place_lose_nothing(self):
        head = XML_HEAD + "<profile>\n"
        fields = '<?xml version="1.0" encoding="UTF-8"?>\n<xfdf xmlns="x">\n<fields>\n'
        field = '<field name="a">\n<value>1</value>\n</field>\n'
        end = "</fields>\n</xfdf>\n"
        lossy = [
            ((SETTINGS / "smb.conf").read_text(), "not a profile"),
            ((SETTINGS / "python3.11.desktop").read_text(), "the first section and the order of sections"),
            ("[a]\nx=1\n; note\n", "comments"), ("[/]\n# note\na=1\n", "comments"),
            ("[/]\n{\na=1\n}\nb=2\n", "no entry"), ("x\n[/]\na=1\n", "no entry"), ("[/]\n[l] x\na=1\n}\n", "no entry"),
            ("[/]\n{ x\na=1\n", "no entry"), ("[/]\na=1\0x\n", "no entry"), ("[/]\na\tb=1\n", "no entry"),
            ("[/]\n {\n a=1\n [l]\n  {\n  b=1\n", "ends inside a list"), ("[/]\n {\n a=1", "ends inside a list"),
            (head + "<!-- note -->\n</profile>\n", "comments"), (head + "<other>\n</profile>\n", "no entry"),
            (head + '<item name="a" b="c">1</item>\n</profile>\n', "no entry"),
            (head + '<item name="a">1</item> x\n</profile>\n', "no entry"),
            (head + '<item name="a">&#x000a;</item>\n</profile>\n', "no entry"),
            (head + '<list name="l">\n<item name="a">1</item>\n', "ends inside a list"),
            (fields + f'<field name="l">\n{field}</field>\n' + end, "nesting"),
            (fields + field + "<!-- note -->\n" + end, "comments"), (fields + '<f href="a.pdf"/>\n' + end, "no entry"),
            (fields + '<field name="a"/>\n' + end, "no entry"), (fields + field, "ends inside a list")]
        kept = ["", "[/]\n", "[/]\n  a b = c \n[l]\nx\n}\n\n[/]\n{\n}\n}\n",
                head + '<item name="a">&#x41;&cr;</item>\n<list name="l">\n</list>\n</profile>\n', fields + field + end]
        name = self.folder / "checked"
        # All commands that change a file share the check, so the cases use the commands in turn.
        commands_in_turn = itertools.cycle(
            (["set", "--path", "n", "1"], ["append", "--path", "n", "1"], ["delete", "--path", "a"]))
        for text, reason in lossy[::commands.EACH] + [(text, None) for text in kept]:
            for encoding in ENCODINGS:
                content = text.encode(encoding) if text else b""
                if "xfdf" in text and encoding == "utf-16":
                    continue
                command = next(commands_in_turn)
                with self.subTest(text, command=command):
                    name.write_bytes(content)
                    if reason is None:
                        command = ["append" if command[0] == "delete" else command[0], "--path", "n", "1"]
                        self.qxut(command[0], str(name), *command[1:])
                        self.assertIn("n = 1", self.show(str(name)))
                    else:
                        message = self.qxut(command[0], str(name), *command[1:], code=6)
                        self.assertIn(f"{name}: not changed", message)
                        self.assertIn(reason, message)
                        self.assertEqual(name.read_bytes(), content)
                if reason is not None:
                    self.qxut("set", str(name), "--path", "n", "1", "--output", str(self.folder / "out"))
                    self.assertEqual(name.read_bytes(), content)
                    self.qxut("set", str(name), "--path", "n", "1", "--force")
                    self.assertEqual(name.read_bytes(), (self.folder / "out").read_bytes())
        self.assertIn("not changed", self.qxut("copy", self.file, self.write("ini", "[a]\nx=1\n"), code=6))
        self.qxut("convert", self.file, str(name), "--form", "text", "--pack")
        whole = name.read_bytes()
        for content, reason in ((whole[:-9], "damage"), (whole[:9], "damage"), (whole + b"x", "no entry")):
            name.write_bytes(content)
            self.assertIn(reason, self.qxut("set", str(name), "--path", "n", "1", code=6))
            self.assertEqual(name.read_bytes(), content)
        ini = self.folder / "settings.conf"
        shutil.copy(SETTINGS / "smb.conf", ini)
        before = ini.read_bytes()
        for command in (["set", ini, "--path", "a", "1", "--output", self.folder / "." / "settings.conf"],
                        ["convert", ini, ini, "--form", "text"], ["convert", ini, name, "--form", "xml"]):
            self.assertRegex(self.qxut(*map(str, command), code=4 if command[0] == "convert" else 6),
                             "not a profile|neither a profile nor an INI file")
            self.assertEqual(ini.read_bytes(), before)
        for command in (["convert", self.file, ini, "--form", "text"], ["set", self.file, "--path", "a", "1", "--output", ini]):
            self.assertIn("not replaced", self.qxut(*map(str, command), code=6))
            self.assertEqual(ini.read_bytes(), before)
            self.qxut(*map(str, command), "--force")
            self.assertIn("a = 1\n", self.show(str(ini)))
            ini.write_bytes(before)
        ini.write_text("[a]\nx=1\n; note\n")
        self.assertIn("comments", self.qxut("convert", str(ini), str(ini), "--form", "text", code=6))
        self.qxut("convert", str(ini), str(ini), "--form", "text", "--force")
        self.assertEqual(self.show(str(ini)), "x = 1\n")
        cut = self.write("cut", "[/]\n {\n a=1\n")
        done = subprocess.run([*commands.COMMAND, "profile", "get", cut, "--path", "a"], capture_output=True)
        self.assertEqual((done.returncode, done.stdout.strip()), (0, b"1"))
        self.assertIn(b"ends inside a list", done.stderr)

    def test_limit_of_unpacking(self):
        def packed(name, text):
            compressor = zlib.compressobj(9, wbits=-15)
            path = self.folder / name
            path.write_bytes(b"ZxvQ" + compressor.compress(text.encode("utf-16")) + compressor.flush())
            return str(path)

        small = packed("small", "[/]\n {\na=1\nb=" + "x" * 1000000 + "\n }\n")  # 1,000 times, but less than 64 MB
        large = packed("large", "[/]\n {\na=1\nb=" + "x" * 35000000 + "\n }\n")
        self.assertEqual(self.qxut("get", small, "--path", "a"), "1\n")
        self.assertIn("--max-size", self.qxut("get", large, "--path", "a", code=5))
        self.assertIn("--max-size", self.qxut("get", small, "--path", "a", "--max-size", "1MB", code=5))
        for size in ("0", "100MB"):
            self.assertEqual(self.qxut("get", large, "--path", "a", "--max-size", size), "1\n")

    def test_delete(self):
        self.assertEqual(json.loads(self.qxut("delete", self.file, "--path", "l/b", "--json"))["changed"], 3)
        self.assertIn("no value 'l'", self.qxut("delete", self.file, "--path", "l", code=1))
        self.qxut("delete", self.file, "--path", "l", "--lists")
        self.assertEqual(self.show(), "a = 1\nc = x\\r\\ny\\x1B[31m\n")

    def test_copy(self):
        target = str(self.folder / "target")
        self.qxut("copy", self.file, target, "--list", "l", "--to", "x/y")
        self.assertEqual(json.loads(self.qxut("copy", self.file, target, "--list", "l", "--to", "x/y", "--json")),
                         {"file": target, "changed": 2})
        self.assertEqual(self.show(target), "[x]\n  [y]\n    b = 2\n    b = 3\n    b = 2\n    b = 3\n")

    def test_convert(self):
        xml, xfdf, text = (str(self.folder / name) for name in ("xml", "xfdf", "text"))
        self.qxut("set", self.file, "--path", "l/<&>\"'", " \u00fc\t")
        self.assertEqual(json.loads(self.qxut("convert", self.file, xml, "--form", "xml", "--json")),
                         {"file": xml, "entries": 8})
        self.qxut("convert", xml, text, "--form", "text")
        self.assertEqual(pathlib.Path(text).read_bytes(), pathlib.Path(self.file).read_bytes())
        self.qxut("convert", text, xfdf, "--form", "xfdf")
        self.assertEqual(self.show(xfdf), "a = 1\nl.b = 2\nl.b = 3\nl.<&>\"' =  \u00fc\\t\nl.b = 4\nc = x\\r\\ny\u241B[31m\n")
        # Reads the form with a parser that is independent of the library.
        values = ElementTree.parse(xfdf).getroot().iter("{http://ns.adobe.com/xfdf/}value")
        self.assertEqual([value.text for value in values], ["1", "2", "3", " \u00fc\t", "4", "x\r\ny\u241B[31m"])
        self.assertEqual(subprocess.run(["xmllint", "--noout", xfdf]).returncode, 0)
        for arguments in ([], ["--form", "pdf"]):
            self.qxut("convert", self.file, xml, *arguments, code=2)
        self.assertIn("XFDF cannot contain files", self.qxut("embed", xfdf, self.file, code=2))
        self.assertIn("well-formed", self.qxut("show", self.write("bad", XML_HEAD + "<profile>\ntext\n"), code=4))

    def test_changes_keep_form_and_packing(self):
        changed, expected, plain = (str(self.folder / name) for name in ("changed", "expected", "plain"))
        for form in ("text", "xml", "xfdf"):
            for pack in ([], ["--pack"]):
                with self.subTest(form, pack=pack):
                    self.qxut("convert", self.file, changed, "--form", form, *pack)
                    self.qxut("set", changed, "--path", "a", "new", "--force")  # XFDF loses its nesting
                    self.qxut("convert", changed, expected, "--form", form, *pack)
                    content = pathlib.Path(changed).read_bytes()
                    self.assertEqual(content, pathlib.Path(expected).read_bytes())
                    self.assertIn("a = new\n", self.show(changed))
                    self.qxut("convert", changed, plain, "--form", form)
                    if pack:
                        self.assertEqual(content[:4], b"ZxvQ")
                        self.assertEqual(zlib.decompress(content[4:], -15), pathlib.Path(plain).read_bytes())

    @unittest.skipUnless(shutil.which("pdftk"), "pdftk isn't installed")
    def test_pdf_software_fills_a_form_with_what_convert_writes(self):
        values = {"customer/name": "J\u00fcrgen <&> \"O'Neil\" \u65e5\u672c", "customer/address": "  1\r\n\t2", "note": ""}
        for path, value in values.items():
            self.qxut("set", str(self.folder / "values"), "--path", path, value, "--create")
        xfdf, filled = str(self.folder / "xfdf"), str(self.folder / "filled.pdf")
        self.qxut("convert", str(self.folder / "values"), xfdf, "--form", "xfdf")
        subprocess.run(["pdftk", str(FORMS / "customer.pdf"), "fill_form", xfdf, "output", filled], check=True)
        fields = subprocess.run(["pdftk", filled, "dump_data_fields_utf8"], check=True, capture_output=True).stdout.decode()
        for path, value in values.items():
            self.assertIn(f"FieldName: {path.replace('/', '.')}\n", fields)
            self.assertIn(f"FieldValue: {value}\n".replace("\r\n", "\n"), fields.replace("\r\n", "\n").replace("\r", "\n"))

    def test_embed_and_extract(self):
        (self.folder / "a.bin").write_bytes(bytes(range(256)) * 40)
        (self.folder / "b.txt").write_text("text")
        profile, out = str(self.folder / "files"), self.folder / "out"
        arguments = ["--list", "", "--key", "secret"]
        self.assertEqual(json.loads(self.qxut("embed", profile, str(self.folder / "*.bin"), str(self.folder / "b.txt"),
                                              "--create", "--json", *arguments)), {"file": profile, "files": 2})
        self.assertIn("[File.Entry]\n  Name = a.bin\n  Contents = @2@", self.show(profile))
        self.qxut("extract", profile, str(out), *arguments)
        self.assertEqual((out / "a.bin").read_bytes(), (self.folder / "a.bin").read_bytes())
        self.assertEqual((out / "b.txt").read_bytes(), b"text")
        self.assertIn("no such file", self.qxut("embed", profile, str(self.folder / "none*"), code=1))
        (self.folder / "c.empty").touch()
        before = pathlib.Path(profile).read_bytes()
        for pattern, told in (("c.empty", "1 of 1 file "), ("?.[be]*", "no such file"), ("c*", "1 of 1 file "),
                              ("?.*", "1 of 3 files")):
            self.assertIn(told, self.qxut("embed", profile, str(self.folder / pattern),
                                          code=1 if "[" in pattern else 3))
            self.assertEqual(pathlib.Path(profile).read_bytes(), before)
        self.assertIn("no files", self.qxut("extract", self.file, str(out), code=1))
        self.assertIn("cannot create the folder", self.qxut("extract", profile, str(out / "a.bin"), code=6))
        self.qxut("set", profile, "--path", "File.Entry/Name", "../a.bin")
        self.assertIn("1 of 2 files", self.qxut("extract", profile, str(out), *arguments, code=4))

    def test_a_wrong_pass_phrase_extracts_nothing(self):
        (self.folder / "a").write_text("content")
        profile, out = str(self.folder / "files"), self.folder / "out"
        self.qxut("embed", profile, str(self.folder / "a"), "--create", "--key", "secret")
        for arguments in (["--key", "wrong"], []):
            message = self.qxut("extract", profile, str(out), *arguments, code=4)
            self.assertIn(f"{profile}: a: the pass phrase is wrong or missing", message)
        self.assertEqual(list(out.iterdir()), [])
        packed = self.qxut("get", profile, "--path", "File.Entry/Contents").encode()
        self.assertEqual(self.run_qxut("unpack", "--key", "secret", stdin=packed), b"content")
        self.assertIn(b"the pass phrase is wrong", self.run_qxut("unpack", "--key", "wrong", code=4, stdin=packed))
        self.assertIn(b"needs a pass phrase", self.run_qxut("unpack", code=4, stdin=packed))
        # The phrase is the first line, and the input follows.
        self.assertEqual(self.run_qxut("unpack", "--key-fd", "0", stdin=b"secret\n" + packed), b"content")

    def test_pass_phrases(self):
        (self.folder / "a").write_text("content")
        key = self.folder / "key"
        profile, out = str(self.folder / "files"), str(self.folder / "out")
        for content in (b"\xef\xbb\xbfs\xc3\xa4cret\r\n", b"s\xc3\xa4cret"):
            key.write_bytes(content)
            self.qxut("embed", profile, str(self.folder / "a"), "--create", "--key-file", str(key))
        self.qxut("extract", profile, out, "--key", "s\u00e4cret")
        for content, reason in ((b"", "is empty"), (b"\n", "is empty"), (b"a\nb", "more than one line"), (b"a\0", "one line"),
                                (b"\xff", "UTF-8"), (b"x" * 1025, "longer than 1024")):
            key.write_bytes(content)
            self.assertIn(reason, self.qxut("extract", profile, out, "--key-file", str(key), code=2))
        self.assertIn("is empty", self.qxut("extract", profile, out, "--key", "", code=2))
        self.assertIn("cannot open", self.qxut("extract", profile, out, "--key-file", str(key) + "x", code=3))
        self.assertIn("descriptor 99", self.qxut("extract", profile, out, "--key-fd", "99", code=3))
        self.assertIn("excludes", self.qxut("extract", profile, out, "--key", "x", "--ask-key", code=2))

    @unittest.skipIf(commands.COMMAND[-1].endswith(".exe"), "the environment sets the code page only on linux")
    def test_phrases_that_the_code_page_cannot_hold(self):
        (self.folder / "a").write_text("content")
        for page, phrase, code in (("1252", "\u65e5\u672c", 2), ("1252", "\u00e4", 0), ("65001", "\u65e5\u672c", 0)):
            done = subprocess.run([*commands.COMMAND, "profile", "embed", str(self.folder / "files"), str(self.folder / "a"),
                                   "--create", "--key", phrase], capture_output=True, env=dict(os.environ, QXPLATFORM_ACP=page))
            self.assertEqual(done.returncode, code, done)
            self.assertEqual(b"can't represent" in done.stderr, code != 0)

    @unittest.skipIf(commands.COMMAND[-1].endswith(".exe"), "the emulator has no terminal")
    def test_on_a_terminal(self):
        """The prompt doesn't echo the answer, and values can't control the terminal."""
        (self.folder / "a").write_text("content")
        profile, out = str(self.folder / "files"), str(self.folder / "out")
        embed = ["profile", "embed", profile, str(self.folder / "a"), "--create", "--ask-key"]
        self.assertEqual(self.on_terminal(embed, b"secret\n", b"secret\n"), (0, b"Pass phrase: \r\nThe same again: \r\n"))
        self.qxut("extract", profile, out, "--key", "secret")
        self.assertEqual(self.on_terminal(embed, b"one\n", b"two\n")[0], 2)
        # Ctrl-C ends the program and leaves the terminal as it was.
        self.assertEqual(self.on_terminal(embed, b"\x03")[0], 130)
        done = subprocess.run([*commands.COMMAND, *embed], capture_output=True, start_new_session=True)
        self.assertEqual((done.returncode, done.stderr), (3, b"qxut: cannot ask for the pass phrase: there is no terminal\n"))
        self.qxut("set", profile, "--path", "x", "a\x1b[31m\u009b")
        self.assertEqual(self.on_terminal(["profile", "get", profile, "--path", "x"]), (0, b"a\\x1B[31m\\x9B\r\n"))
        self.assertEqual(self.qxut("get", profile, "--path", "x"), "a\x1b[31m\u009b\n")
        packed = self.folder / "packed"
        packed.write_bytes(base64.b64encode(b"\x1b[31m\n\tx"))
        self.assertEqual(self.on_terminal(["unpack", str(packed)]), (0, b"\\x1B[31m\r\n\tx"))

    def on_terminal(self, arguments, *answers):
        """Runs qxut on a terminal of its own, types each answer after a prompt, and returns the exit code and the output."""
        child, terminal = pty.fork()
        if child == 0:
            os.execv(commands.COMMAND[0], [*commands.COMMAND, *arguments])
        out = b""
        answers = list(answers)
        try:
            while piece := os.read(terminal, 4096):
                out += piece
                if answers and out.endswith(b": "):
                    os.write(terminal, answers.pop(0))
        except OSError:  # the end of the output
            pass
        _, status = os.waitpid(child, 0)
        has_echo = termios.tcgetattr(terminal)[3] & termios.ECHO
        os.close(terminal)
        self.assertTrue(has_echo)
        return os.waitstatus_to_exitcode(status), out

    def test_errors_name_file_and_reason(self):
        (self.folder / "short").write_bytes(b"[/]")
        for name, code, reason in (("none", 3, "no such file"), ("none/none", 3, "no such folder"),
                                   (".", 3, "is a folder"),
                                   ("short", 5, "has only 3 bytes")):
            path = str(self.folder / name)
            message = self.qxut("show", path, code=code)
            self.assertIn(path, message)
            self.assertIn(reason, message)
        self.assertIn("--path", self.qxut("get", self.file, code=2))
        self.qxut("unknown", code=2)
        missing = str(self.folder / "missing")
        self.assertIn("no such file", self.qxut("set", missing, "--path", "x", "1", code=3))
        self.assertFalse(pathlib.Path(missing).exists())
        note = subprocess.run([*commands.COMMAND, "profile", "show", str(SETTINGS / "smb.conf")], capture_output=True)
        self.assertIn(b"has no entries", note.stderr)

    @unittest.skipIf(commands.COMMAND[-1].endswith(".exe"), "names and pipes of the system, and arguments that are bytes")
    def test_what_only_linux_has(self):
        self.assertEqual(self.show("Z:" + self.file.replace("/", "\\")), self.show())
        done = subprocess.run([*commands.COMMAND, "profile", "set", "--create", b"n\xE9", "--path", "x", "1"],
                              cwd=self.folder, capture_output=True)
        self.assertEqual((done.returncode, done.stderr), (2, b"qxut: the argument 'n\\xE9' is not UTF-8\n"))
        self.assertEqual([path.name for path in self.folder.iterdir()], ["file"])
        os.mkfifo(self.folder / "pipe")
        self.assertIn("is a pipe", self.qxut("show", str(self.folder / "pipe"), code=3))
        start = time.monotonic()
        for target in (self.folder / "pipe", "/dev/null"):
            self.assertIn("is a pipe or a device", self.qxut("convert", self.file, str(target), "--form", "xml", code=6))
        self.assertLess(time.monotonic() - start, 5, "nobody waits until it becomes a file")

    @unittest.skipIf(commands.COMMAND[-1].endswith(".exe"), "the limit would be one for the emulator's own files too")
    def test_a_full_disk_leaves_the_file(self):
        before = pathlib.Path(self.file).read_bytes()
        done = subprocess.run([*commands.COMMAND, "profile", "set", self.file, "--path", "x", "x" * 1000],
                              capture_output=True, encoding="utf-8", restore_signals=False,  # SIGXFSZ stays ignored
                              preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (1000, 1000)))
        self.assertEqual((done.returncode, done.stderr), (6, f"qxut: {self.file}: cannot write the file; is the disk full?\n"))
        self.assertEqual(pathlib.Path(self.file).read_bytes(), before)

    def test_deep_lists_grow_in_one_column(self):
        deep = self.write("deep", "[/]\r\n" + "[l]\r\n" * 4000 + "x=1\r\n" + "}\r\n" * 4000)
        self.assertLess(len(self.show(deep)), 1000000)

    def test_help_and_version(self):
        for arguments in (["--help"], ["profile", "--help"], ["profile", "set", "--help"]):
            done = subprocess.run([*commands.COMMAND, *arguments], capture_output=True, encoding="utf-8")
            self.assertEqual(done.returncode, 0)
            self.assertIn("Usage: qxut", done.stdout)
        version = subprocess.run([*commands.COMMAND, "--version"], capture_output=True, encoding="utf-8")
        self.assertEqual((version.returncode, version.stdout.strip()), (0, "qxut 23.2 (library version 5890)"))


if __name__ == "__main__":
    commands.main()
