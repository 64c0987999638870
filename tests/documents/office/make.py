#!/usr/bin/python3
"""Makes the documents of this folder with office programs, and answers.tsv with what exiftool reads from them.

Needs the Debian packages libreoffice-writer-nogui, libreoffice-calc-nogui, pandoc, gnumeric, abiword,
libimage-exiftool-perl and libarchive-zip-perl. The tests run none of them.
"""
import html
import os
import pathlib
import sys
import tempfile

FOLDER = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(FOLDER.parent))
import answers  # noqa: E402
from answers import run  # noqa: E402

NAMESPACE = "urn:oasis:names:tc:opendocument:xmlns"
SOURCE = f"""<?xml version="1.0" encoding="UTF-8"?>
<office:document xmlns:office="{NAMESPACE}:office:1.0" xmlns:meta="{NAMESPACE}:meta:1.0" xmlns:text="{NAMESPACE}:text:1.0"
    xmlns:table="{NAMESPACE}:table:1.0" xmlns:dc="http://purl.org/dc/elements/1.1/" office:version="1.3"
    office:mimetype="application/vnd.oasis.opendocument.%s">
<office:meta><meta:initial-creator>J\u00f6rg Wei\u00df</meta:initial-creator>
<meta:creation-date>2001-02-03T04:05:06</meta:creation-date><dc:creator>Ann Smith</dc:creator>
<dc:date>2002-03-04T05:06:07</dc:date><dc:title>Gr\u00f6\u00dfe &amp; Ma\u00df</dc:title><dc:subject>Angebot</dc:subject>
<dc:description>zweite Fassung</dc:description><meta:keyword>alpha</meta:keyword><meta:keyword>beta</meta:keyword>
</office:meta><office:body><office:%s>%s</office:%s></office:body></office:document>
"""
CELL = '<table:table table:name="S"><table:table-row><table:table-cell/></table:table-row></table:table>'
NOTES = """---
title: Notes & plans
author: [Ann Smith, Bob]
subject: Plans
keywords: [one, two]
description: short
---
# Heading
"""

# The fields of a record, with exiftool's names for Office Open XML, OpenDocument and the XML of word processors.
WORD_XML = "WordDocumentDocumentProperties"
FIELDS = {
    "Title": ("Title", "Title", WORD_XML + "Title"),
    "Subject": ("Subject", "Subject", WORD_XML + "Subject"),
    "Author": ("Creator", "Initial-creator", WORD_XML + "Author"),
    "LastAuthor": ("LastModifiedBy", "Creator", WORD_XML + "LastAuthor"),
    "Keywords": ("Keywords", "Keyword", WORD_XML + "Keywords"),
    "Comments": ("Description", "Description", WORD_XML + "Description"),
    "Created": ("CreateDate", "Creation-date", WORD_XML + "Created"),
    "LastSaved": ("ModifyDate", "Date", WORD_XML + "LastSaved"),
}


def make(work):
    for name, kind, body, targets in (
            ("letter.fodt", "text", "<text:p>Hallo</text:p>", {"odt": "", "docx": "", "xml": "MS Word 2003 XML"}),
            ("table.fods", "spreadsheet", CELL, {"ods": "", "xlsx": "", "xml": "MS Excel 2003 XML"})):
        (work / name).write_text(SOURCE % (kind, kind, body, kind), encoding="utf-8")
        for extension, writer in targets.items():
            run("soffice", f"-env:UserInstallation=file://{work}/profile", "--headless", "--convert-to",
                extension + (":" + writer if writer else ""), "--outdir", FOLDER, work / name)
    (work / "notes.md").write_text(NOTES, encoding="utf-8")
    for extension in ("docx", "odt"):
        run("pandoc", work / "notes.md", "-o", FOLDER / f"notes.{extension}",
            env={**os.environ, "SOURCE_DATE_EPOCH": "981173106"})
    run("ssconvert", FOLDER / "table.ods", FOLDER / "sheet.xlsx")
    for extension in ("odt", "docx"):
        run("abiword", f"--to={FOLDER}/article.{extension}", FOLDER / "letter.odt")


def difference(name, field, text):
    """Returns the reader's answer and the rule, for what exiftool answers otherwise."""
    if text == "-":
        return None
    if name == "letter.xml":
        return "-", "the start tag of the block has attributes"
    if field == "Keywords" and text == "alpha":
        return "alpha</meta:keyword><meta:keyword>beta", "keywords without a list reach from the first to the last one"
    if "&" in text:
        return html.escape(text), "entities aren't decoded"
    return None


def main():
    with tempfile.TemporaryDirectory() as work:
        make(pathlib.Path(work))
    found = answers.ask_exiftool(FOLDER)

    def answer(name, field):
        column = {".xml": 2, ".odt": 1, ".ods": 1}.get(pathlib.Path(name).suffix, 0)
        return found[name].get(FIELDS[field][column])

    answers.write(FOLDER, answer, difference)


main()
