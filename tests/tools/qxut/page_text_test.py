"""Compares `qxut html2text` with the browser w3m on real pages, from Debian packages and from tests/data."""

import collections
import difflib
import html.parser
import pathlib
import re
import shutil
import subprocess

import commands

# HTML files of Debian packages, which scripts/packages.txt lists.
PAGES = {
    "bash-doc": ["usr/share/doc/bash/examples/INDEX.html", "usr/share/doc/bash/bash.html"],
    "ccache": ["usr/share/doc/ccache/manual.html"],
    "debian-faq": [f"usr/share/doc/debian/FAQ/{name}.en.html" for name in (
        "basic-defs", "choosing", "compatibility", "contributing", "customizing", "ftparchives", "index", "kernel",
        "pkg-basics", "pkgtools", "software", "uptodate")],
    "libogg-dev": [f"usr/share/doc/libogg-dev/html/{name}.html" for name in (
        "framing", "index", "ogg-multiplex", "oggstream", "skeleton", "libogg/bitpacking", "libogg/decoding",
        "libogg/ogg_packet", "libogg/reference")],
    "libtiff-doc": [f"usr/share/doc/libtiff-doc/manual/{name}.html" for name in (
        "addingtags", "build", "contrib", "genindex", "images", "internals", "libtiff", "tools", "functions/TIFFGetField",
        "functions/TIFFRGBAImage", "specification/coverage")],
    "ninja-build": ["usr/share/doc/ninja-build/manual.html"],
    "w3m": [f"usr/share/doc/w3m/{name}.html" for name in (
        "FAQ", "MANUAL", "STORY", "de/FAQ", "de/MANUAL", "ja/FAQ", "ja/MANUAL")],
    "zlib1g-dev": ["usr/share/doc/zlib1g-dev/examples/zlib_how.html"],
}


def words_of(text):
    """Returns the words of a text. Each Japanese character is a word, because Japanese has no blanks between words and
    w3m breaks lines anywhere."""
    return re.findall(r"[\u3040-\u30ff\u3400-\u9fff]|[^\W\u3040-\u30ff\u3400-\u9fff]+", text)


class DocumentWords(html.parser.HTMLParser):
    """The words of a page in the order of its source."""

    def __init__(self, page):
        super().__init__()
        self._text = []
        self._hidden = False
        self.feed(page)
        self.close()
        self.words = words_of("".join(self._text))

    def handle_starttag(self, tag, attributes):
        self._hidden = tag in ("script", "style")
        if tag == "img":
            self._text.append(f" {dict(attributes).get('alt') or ''} ")
        elif tag not in ("a", "b", "i", "em", "strong", "code", "span", "font", "tt", "kbd", "var", "sub", "sup"):
            self._text.append(" ")

    def handle_endtag(self, tag):
        self._hidden = False
        self.handle_starttag(tag, [])

    def handle_data(self, data):
        if not self._hidden:
            self._text.append(data)


def matches(expected, words):
    """Returns the words that both lists have in the same order."""
    matcher = difflib.SequenceMatcher(None, expected, words, autojunk=len(words) > 20_000)
    return [word for block in matcher.get_matching_blocks() for word in expected[block.a:block.a + block.size]]


def share(page, shown, words):
    """Returns the share of w3m's words that are in `words`, in w3m's order or in the document's order."""
    if not shown:
        return 1.0
    found = len(matches(shown, words))
    if found < len(shown):
        in_document = collections.Counter(matches(DocumentWords(page).words, words))
        found = max(found, (in_document & collections.Counter(shown)).total())
    return found / len(shown)


def read(path):
    data = path.read_bytes()
    charset = re.search(rb"charset=[\"']?([\w-]+)", data[:2000])
    for name in (charset.group(1).decode() if charset else "utf-8", "utf-8", "latin-1"):
        try:
            return re.sub(r"(charset=[\"']?)[\w-]+", r"\1utf-8", data.decode(name))
        except (UnicodeDecodeError, LookupError):
            pass


class PagesOfOthers(commands.CommandTest):
    def test_words_are_those_that_w3m_shows(self):
        self.assertTrue(shutil.which("w3m"), "w3m isn't installed: run scripts/setup")
        paths = [pathlib.Path("/", path) for pages in PAGES.values() for path in pages]
        missing = [f"{package}: /{path}" for package, pages in PAGES.items() for path in pages
                   if not pathlib.Path("/", path).is_file()]
        self.assertGreaterEqual(len(paths) - len(missing), 30, f"too few pages; run scripts/setup. Missing: {missing}")
        checked = 0
        pages = [path for path in paths if path.is_file()] + sorted((commands.DATA / "html").glob("*.html"))
        for path in pages[::commands.EACH]:
            with self.subTest(page=str(path)):
                page = read(path).replace("\0", "")
                shown = subprocess.run(
                    ["w3m", "-dump", "-T", "text/html", "-I", "UTF-8", "-O", "UTF-8", "-cols", "200"],
                    input=page.encode(), capture_output=True, check=True).stdout.decode("utf-8", "replace")
                text = self.run_qxut("html2text", stdin=page.encode()).decode()
                self.assertGreaterEqual(share(page, words_of(shown), words_of(text)), 0.98)
                checked += 1
        self.assertGreaterEqual(checked, 30 // commands.EACH)


if __name__ == "__main__":
    commands.main()
