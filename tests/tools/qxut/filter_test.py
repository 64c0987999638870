"""Tests the filters for packing and markup against Python's own modules."""

import base64
import html
import html.entities
import random
import re
import zlib

import commands

IGNORED = "head script iframe textarea select style".split()
BREAKING = ("/h1 /h2 /h3 /h4 /h5 /h6 /p /div /ol /tr /ul /thead /tbody /blockquote /address /pre /li br hr /td /th"
            .split())


def shown_link(match):
    target, text = match.groups()
    return target if target.lower() == text.lower() else f"{text} [{target}]"


def words_of(page):
    """An independent implementation: returns the words that should remain of a page."""
    page = re.sub("<!--.*-->", "", page, flags=re.S)
    # Behind the last closing tag there is no link, and searching for one takes cubic time.
    end = page.lower().rfind("</a>")
    end = 0 if end < 0 else end + len("</a>")
    page = re.sub(r'<a\s.*?href="(.*?)".*?>(.*?)</a>', shown_link, page[:end], flags=re.S | re.I) + page[end:]
    text = ""
    depth = 0
    for piece, tag in re.findall(r"([^<]*)(<[^<>]*(?=<)|<[^>]*>|$)", page):
        name = re.split(r"[\t\n\r \xa0]", tag[1:-1])[0].lower() if tag.endswith(">") else ""
        if depth == 0:
            text += piece + (" " if name in BREAKING else "- " if name == "li" else "")
        depth += (name in IGNORED) - (name[:1] == "/" and name[1:] in IGNORED)
    return html.unescape(text).split()


class Filters(commands.CommandTest):
    def qxut(self, name, stdin, *flags):
        return self.run_qxut(name, *flags, stdin=stdin.encode() if isinstance(stdin, str) else stdin)

    def test_packed_text_is_base64_of_the_bytes_or_of_a_zlib_stream(self):
        for data in (b"", b"\0", b"\r\n\x1a\xff" * 3, random.Random(1).randbytes(70_001), b"ab" * 300_000)[::commands.EACH]:
            plain = self.qxut("pack", data)
            self.assertEqual(base64.b64decode(plain), data)
            self.assertEqual(self.qxut("unpack", plain), data)
            packed = self.qxut("pack", data, "--compress")
            if data:
                self.assertTrue(packed.startswith(b"@2@"))
                image = base64.b64decode(packed[3:])
                self.assertIn(b"damaged", self.run_qxut("unpack", code=4, stdin=packed[:-5]))
                self.assertIn(data, [zlib.decompress(image[i:]) for i in range(16) if image[i:i + 1] == b"x"])
            self.assertEqual(self.qxut("unpack", packed), data)
        self.assertEqual(self.qxut("unpack", base64.encodebytes(data)), data, "lines of 76 characters")

    def test_unpack_is_strict(self):
        garbage = {b"hello, world": b"not packed text", b"Zg": b"not packed text", b"Zh==": b"not packed text",
                   b"@2@": b"not packed text", b"@2@Zm9v": b"encrypted", b"@1@Zm9vYmFy": b"damaged"}
        for text, reason in list(garbage.items())[::commands.EACH]:
            self.assertIn(reason, self.run_qxut("unpack", code=4, stdin=text), text)
        self.assertEqual(self.qxut("unpack", b" Z m\r\n9\tv \n"), b"foo")
        self.assertEqual(self.qxut("unpack", b"he-ll-o!", "--lenient"), b"\x85\xe9e\xa0\0\0")
        self.assertIn(b"leave out", self.run_qxut("unpack", "--key", "k", code=4, stdin=self.qxut("pack", b"x", "--compress")))
        target = self.folder / "target"
        self.run_qxut("unpack", "--output", str(target), code=4, stdin=b"?")
        self.assertFalse(target.exists())

    def test_files(self):
        source, target = self.folder / "source", self.folder / "target"
        source.write_bytes(b"a & b")
        self.assertEqual(self.run_qxut("mask", str(source), "--output", str(target)), b"")
        self.assertEqual(target.read_bytes(), b"a &amp; b")
        self.assertIn(b"no such file", self.run_qxut("mask", str(self.folder / "none"), code=3))
        self.assertIn(b"folder", self.run_qxut("mask", str(self.folder), code=3))
        self.assertIn(b"zero byte", self.run_qxut("mask", code=4, stdin=b"a\0b"))
        self.assertIn(b"not UTF-8", self.run_qxut("mask", code=4, stdin=b"a\xFF"))
        self.assertIn(b"cannot write the file", self.run_qxut("mask", "--output", str(self.folder), code=6))

    def test_masking(self):
        text = "\ufeff<p class=\"x\">\u00e4 \u20ac \U0001f600\t'&'\r\n"
        masked = self.qxut("mask", text).decode()
        self.assertEqual(masked, "&lt;p class=&quot;x&quot;&gt;&auml; &#x20ac; &#x1f600;&#09;'&amp;'\r\n")
        self.assertEqual(self.qxut("unmask", masked).decode(), text[1:])

    def test_every_reference(self):
        """Each name of the HTML standard, alone and followed by a character that may or may not belong to it."""
        names = sorted(html.entities.html5)
        self.assertGreater(len(names), 2200)
        for behind in ("", "x", "=")[::commands.EACH]:
            masked = "\n".join(f"&{name}{behind}" for name in names)
            expected = "\n".join(html.unescape(f"&{name}{behind}") for name in names)
            self.assertEqual(self.qxut("unmask", masked).decode(), expected)
        for name in names:
            self.assertEqual(html.unescape(f"&{name}"), html.entities.html5[name])
        numbers = "\n".join(f"&#{number};" for number in [*range(0x80, 0x3000), 0xFFFD, 0x10000, 0x10FFFD])
        self.assertEqual(self.qxut("unmask", numbers).decode(), html.unescape(numbers))

    def test_paragraphs(self):
        self.assertEqual(self.qxut("text2html", "a\n\nb\r\nc<\n"),
                         b"<p>a</p><p><br></p><p>b</p><p>c&lt;</p>\n")
        marked = self.qxut("text2html", "a\nb", "--placeholders")
        self.assertEqual(marked, b"[_[p]_]a[_[/p]_][_[p]_]b[_[/p]_]\n")
        self.assertEqual(self.qxut("html2text", marked, "--placeholders"), b"a\nb\n ")
        page = "<p>\u00e4&#x1f600;<script>x</script><li><a href=u>b</a>"
        self.assertEqual(self.qxut("html2text", page).decode(), "\u00e4\U0001f600\n- b\n")
        self.assertEqual(self.qxut("html2text", page, "--links").decode(), "\u00e4\U0001f600\n- b [u]\n")
        self.assertEqual(self.qxut("html2text", ""), b"")
        self.assertIn(b"excludes", self.run_qxut("html2text", "--links", "--simple", code=2))

    def test_pages_of_others_by_simple_rules(self):
        pages = sorted((commands.DATA / "html").glob("*.html"))
        self.assertEqual(len(pages), 12)
        for page in pages[::commands.EACH]:
            content = page.read_text(encoding="utf-8")
            with self.subTest(page=page.name):
                self.assertEqual(self.qxut("html2text", content, "--simple").decode().split(), words_of(content))


if __name__ == "__main__":
    commands.main()
