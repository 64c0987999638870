#!/usr/bin/python3
"""Makes the web pages and Rich Text documents of this folder, and answers.tsv with what exiftool reads from them.

Needs the Debian packages libreoffice-writer-nogui, pandoc, abiword and libimage-exiftool-perl. The tests run none of them.
"""
import pathlib
import re
import sys

FOLDER = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(FOLDER.parent))
import answers  # noqa: E402


def make(work):
    letter = work / "letter.fodt"
    answers.write_flat_document(letter, "text", "<text:p>Hallo</text:p>", answers.LETTER)
    for form, folder in (("html", FOLDER), ("rtf", FOLDER), ("odt", work)):
        answers.soffice(letter, form, folder)
    answers.pandoc_and_abiword(work, work / "letter.odt", FOLDER, ("html", "rtf"))


TAGS = {"Title": ("Title",), "Subject": ("Subject",), "Author": ("Author",), "Keywords": ("Keywords",),
        "Comments": ("Description", "Comments"), "Created": ("CreateDate",), "LastSaved": ("ModifyDate",)}
META = {"Author": "author", "Keywords": "keywords", "Comments": "description"}


def of_page(name, field, text):
    head = re.sub(r"[\r\n]", "", (FOLDER / name).read_text(encoding="utf-8").split("</head>")[0])
    if field == "Title":
        return re.search("<title>(.*?)</title>", head)[1], "blanks and references to special characters stay"
    if field in META:
        found = re.search(rf'<meta\s+name="{META[field]}"\s+content="(.*?)">', head)
        return found[1] if found else "-", "a meta tag ends with a quotation mark and >"
    return ("-", "the name is DC.Subject") if field == "Subject" else None


def of_rtf(name, field, text):
    if name == "article.rtf":
        return "-", "the group of properties begins with a group"
    if field in answers.DATES:
        return None
    return (" " + text.replace("\u00f6", "\\u246\u00f6").replace("\u00df", "\\u223\u00df"),
            "the blank belongs to the value, Unicode references stay")


def difference(name, field, text):
    if text == "-":
        return None
    own = (of_page if name.endswith(".html") else of_rtf)(name, field, text)
    return own if own is not None and own[0] != text else None


answers.compare(FOLDER, make, lambda name, field: TAGS.get(field, ()), difference)
