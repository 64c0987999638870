"""Makes documents with other programs and writes answers.tsv, which contains what another program reads from them.

Each row names a file and a field, the answer of the other program, the answer of the reader ("=" if it is the same) and,
if it differs, the rule that makes it differ. Dates are in UTC, tabs are written as \\t.
"""
import datetime
import html
import json
import os
import pathlib
import re
import subprocess
import tempfile

FIELDS = ("Title", "Subject", "Author", "LastAuthor", "Keywords", "Comments", "Created", "LastSaved")
DATES = ("Created", "LastSaved")

NAMESPACE = "urn:oasis:names:tc:opendocument:xmlns"
LETTER = (("meta:initial-creator", "J\u00f6rg Wei\u00df"), ("meta:creation-date", "2001-02-03T04:05:06"),
          ("dc:creator", "Ann Smith"), ("dc:date", "2002-03-04T05:06:07"), ("dc:title", "Gr\u00f6\u00dfe & Ma\u00df"),
          ("dc:subject", "Angebot"), ("dc:description", "zweite Fassung"), ("meta:keyword", "alpha"))
NOTES = """---
title: Notes & plans
author: [Ann Smith, Bob]
subject: Plans
keywords: [one, two]
description: short
---
# Heading
"""


def run(*command, **settings):
    subprocess.run([str(word) for word in command], check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                   timeout=120, **settings)


def write_flat_document(path, kind, body, properties):
    meta = "".join(f"<{name}>{html.escape(text)}</{name}>\n" for name, text in properties)
    path.write_text(f"""<?xml version="1.0" encoding="UTF-8"?>
<office:document xmlns:office="{NAMESPACE}:office:1.0" xmlns:meta="{NAMESPACE}:meta:1.0" xmlns:text="{NAMESPACE}:text:1.0"
    xmlns:table="{NAMESPACE}:table:1.0" xmlns:dc="http://purl.org/dc/elements/1.1/" office:version="1.3"
    office:mimetype="application/vnd.oasis.opendocument.{kind}">
<office:meta>{meta}</office:meta><office:body><office:{kind}>{body}</office:{kind}></office:body></office:document>
""", encoding="utf-8")


def soffice(source, form, folder, **settings):
    run("soffice", f"-env:UserInstallation=file://{source.parent}/profile", "--headless", "--convert-to", form, "--outdir",
        folder, source, **settings)


def pandoc_and_abiword(work, letter, folder, forms):
    """Makes notes.* and article.*, the latter from the letter."""
    (work / "notes.md").write_text(NOTES, encoding="utf-8")
    for form in forms:
        run("pandoc", "-s", work / "notes.md", "-o", folder / f"notes.{form}",
            env={**os.environ, "SOURCE_DATE_EPOCH": "981173106"})
        run("abiword", f"--to={folder}/article.{form}", letter)


def documents(folder):
    return sorted(path.name for path in folder.iterdir() if path.is_file() and path.suffix not in (".py", ".tsv"))


def ask_exiftool(folder):
    """Returns exiftool's tags by the names of the files."""
    output = subprocess.run(["exiftool", "-j", "-charset", "utf8", *documents(folder)],
                            cwd=folder, check=True, capture_output=True, env={"TZ": "UTC", "PATH": "/usr/bin:/bin"})
    return {found["SourceFile"]: found for found in json.loads(output.stdout)}


def date_text(value):
    date = datetime.datetime.fromisoformat(re.sub(r"^(\d+):(\d+):(\d+)", r"\1-\2-\3", value))
    if date.tzinfo is not None:
        date = date.astimezone(datetime.timezone.utc)
    return f"{date.year}-{date.month}-{date.day} {date.hour}:{date.minute}:{date.second}"


def write(folder, answer, difference):
    """answer(name, field) returns the other program's text or None; difference(name, field, text) returns the reader's
    text and the rule, or None if it is the same."""
    rows = []
    for name in documents(folder):
        for field in FIELDS:
            text = answer(name, field)
            text = "-" if text is None else date_text(str(text)) if field in DATES else str(text)
            cells = (name, field, text) + (difference(name, field, text) or ("=",))
            rows.append("\t".join(cell.replace("\t", "\\t") for cell in cells))
    (folder / "answers.tsv").write_text("".join(row + "\n" for row in rows), encoding="utf-8")


def compare(folder, make, tags, difference, find=ask_exiftool):
    """Makes the documents and writes answers.tsv. tags(name, field) returns the other program's names for a field."""
    with tempfile.TemporaryDirectory() as work:
        make(pathlib.Path(work))
    found = find(folder)
    write(folder, lambda name, field: next((found[name][tag] for tag in tags(name, field) if tag in found[name]), None),
          difference)
