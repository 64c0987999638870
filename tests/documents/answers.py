"""Writes answers.tsv, which contains what another program reads from the documents of a folder.

Each row names a file and a field, the answer of the other program, the answer of the reader ("=" if it is the same) and,
if it differs, the rule that makes it differ. Dates are in UTC, tabs are written as \\t.
"""
import datetime
import json
import re
import subprocess

FIELDS = ("Title", "Subject", "Author", "LastAuthor", "Keywords", "Comments", "Created", "LastSaved")
DATES = ("Created", "LastSaved")


def run(*command, **settings):
    subprocess.run([str(word) for word in command], check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                   timeout=120, **settings)


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
