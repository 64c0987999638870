#!/usr/bin/python3
"""Makes the web pages and Rich Text documents of this folder, and answers.tsv with what exiftool reads from them.

Needs the Debian packages libreoffice-writer-nogui, pandoc, abiword and libimage-exiftool-perl. The tests run none of them.
"""
import os
import pathlib
import re
import sys
import tempfile

FOLDER = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(FOLDER.parent))
import answers  # noqa: E402
from answers import run  # noqa: E402

SOURCE = """<?xml version="1.0" encoding="UTF-8"?>
<office:document xmlns:office="urn:oasis:names:tc:opendocument:xmlns:office:1.0"
    xmlns:meta="urn:oasis:names:tc:opendocument:xmlns:meta:1.0" xmlns:dc="http://purl.org/dc/elements/1.1/"
    xmlns:text="urn:oasis:names:tc:opendocument:xmlns:text:1.0" office:version="1.3"
    office:mimetype="application/vnd.oasis.opendocument.text"><office:meta>
<meta:initial-creator>J\u00f6rg Wei\u00df</meta:initial-creator><meta:creation-date>2001-02-03T04:05:06</meta:creation-date>
<dc:creator>Ann Smith</dc:creator><dc:date>2002-03-04T05:06:07</dc:date><dc:title>Gr\u00f6\u00dfe &amp; Ma\u00df</dc:title>
<dc:subject>Angebot</dc:subject><dc:description>zweite Fassung</dc:description><meta:keyword>alpha</meta:keyword>
</office:meta><office:body><office:text><text:p>Hallo</text:p></office:text></office:body></office:document>
"""
NOTES = """---
title: Notes & plans
author: [Ann Smith, Bob]
subject: Plans
keywords: [one, two]
description: short
---
# Heading
"""


def make(work):
    (work / "letter.fodt").write_text(SOURCE, encoding="utf-8")
    (work / "notes.md").write_text(NOTES, encoding="utf-8")
    for extension in ("html", "rtf", "odt"):
        run("soffice", f"-env:UserInstallation=file://{work}/profile", "--headless", "--convert-to", extension, "--outdir",
            FOLDER if extension != "odt" else work, work / "letter.fodt")
    for extension in ("html", "rtf"):
        run("pandoc", "-s", work / "notes.md", "-o", FOLDER / f"notes.{extension}",
            env={**os.environ, "SOURCE_DATE_EPOCH": "981173106"})
        run("abiword", f"--to={FOLDER}/article.{extension}", work / "letter.odt")


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


def main():
    with tempfile.TemporaryDirectory() as work:
        make(pathlib.Path(work))
    found = answers.ask_exiftool(FOLDER)

    def answer(name, field):
        return next((found[name][tag] for tag in TAGS.get(field, ()) if tag in found[name]), None)

    answers.write(FOLDER, answer, difference)


main()
