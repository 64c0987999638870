#!/usr/bin/python3
"""Makes the documents of this folder with office programs, and answers.tsv with what exiftool reads from them.

Needs the Debian packages libreoffice-writer-nogui, libreoffice-calc-nogui, pandoc, gnumeric, abiword,
libimage-exiftool-perl and libarchive-zip-perl. The tests run none of them.
"""
import html
import pathlib
import sys

FOLDER = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(FOLDER.parent))
import answers  # noqa: E402

CELL = '<table:table table:name="S"><table:table-row><table:table-cell/></table:table-row></table:table>'
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
    for name, kind, body, forms in (
            ("letter.fodt", "text", "<text:p>Hallo</text:p>", ("odt", "docx", "xml:MS Word 2003 XML")),
            ("table.fods", "spreadsheet", CELL, ("ods", "xlsx", "xml:MS Excel 2003 XML"))):
        answers.write_flat_document(work / name, kind, body, (*answers.LETTER, ("meta:keyword", "beta")))
        for form in forms:
            answers.soffice(work / name, form, FOLDER)
    answers.run("ssconvert", FOLDER / "table.ods", FOLDER / "sheet.xlsx")
    answers.pandoc_and_abiword(work, FOLDER / "letter.odt", FOLDER, ("docx", "odt"))


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


def tags(name, field):
    return FIELDS[field][{".xml": 2, ".odt": 1, ".ods": 1}.get(pathlib.Path(name).suffix, 0)],


answers.compare(FOLDER, make, tags, difference)
