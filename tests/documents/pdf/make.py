#!/usr/bin/python3
"""Makes the documents of this folder, and answers.tsv with what pdfinfo reads from them.

Needs the Debian packages texlive-latex-base, ghostscript, qpdf, img2pdf, libreoffice-writer-nogui, imagemagick,
libimage-exiftool-perl and poppler-utils. The tests run none of them.
"""
import os
import pathlib
import subprocess
import sys

FOLDER = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(FOLDER.parent))
import answers  # noqa: E402

ARTICLE = r"""\documentclass{article}
\pdfminorversion=%d \pdfobjcompresslevel=%d
\pdfinfo{/Title (Gr\string\374\string\337e) /Subject (Plans \string\(draft\string\)) /Author (Ann Smith)
    /Keywords (one, two)}
\begin{document}Hallo\end{document}
"""
PRINT = """%!PS
[ /Title (Sales) /Author <FEFF005A006F00EB> /Subject (North) /Keywords (a b) /CreationDate (D:20010203040506+01'30')
/DOCINFO pdfmark
showpage
"""
LETTER = (("meta:initial-creator", "J\u00f6rg Wei\u00df"), ("dc:title", "Letter \u2013 1"), ("dc:subject", "Angebot"),
          ("meta:keyword", "alpha"))
TAGS = {"Title": "Title", "Subject": "Subject", "Author": "Author", "Keywords": "Keywords", "Created": "CreationDate",
        "LastSaved": "ModDate"}


def make(work):
    environment = {**os.environ, "SOURCE_DATE_EPOCH": "981173106", "TZ": "UTC"}
    for name, version, compression in (("article", 4, 0), ("compressed", 5, 2)):
        (work / f"{name}.tex").write_text(ARTICLE % (version, compression))
        answers.run("pdflatex", "-interaction=batchmode", f"-output-directory={work}", work / f"{name}.tex", env=environment)
        (FOLDER / f"{name}.pdf").write_bytes((work / f"{name}.pdf").read_bytes())
    (work / "print.ps").write_text(PRINT)
    answers.run("gs", "-q", "-sDEVICE=pdfwrite", "-dCompatibilityLevel=1.4", "-o", FOLDER / "print.pdf", work / "print.ps",
        env=environment)
    answers.write_flat_document(work / "letter.fodt", "text", "", LETTER)
    answers.soffice(work / "letter.fodt", "pdf", FOLDER, env=environment)
    answers.run("convert", "-size", "8x8", "xc:red", work / "red.jpg")
    answers.run("img2pdf", "--title", "Red", "--author", "Zo\u00eb", "--creationdate", "2001-02-03T04:05:06", "--moddate",
        "2002-03-04T05:06:07", work / "red.jpg", "-o", FOLDER / "picture.pdf", env=environment)
    article = FOLDER / "article.pdf"
    answers.run("qpdf", "--deterministic-id", "--linearize", article, FOLDER / "linear.pdf")
    answers.run("qpdf", "--deterministic-id", "--object-streams=generate", article, FOLDER / "streams.pdf")
    answers.run("exiftool", "-Title=New title", "-Keywords=", "-o", FOLDER / "updated.pdf", FOLDER / "print.pdf")


def ask(name):
    output = subprocess.run(["pdfinfo", "-isodates", "-enc", "UTF-8", FOLDER / name], check=True, capture_output=True,
                            env={"TZ": "UTC", "PATH": "/usr/bin:/bin"})
    pairs = (line.split(":", 1) for line in output.stdout.decode().splitlines())
    return {key: text.strip() for key, text in pairs if text.strip()}


LAST = "an information dictionary that is the last object of its table isn't read"
RULES = {"article.pdf": LAST, "letter.pdf": LAST, "compressed.pdf": "tables in streams aren't read",
         "streams.pdf": "tables in streams aren't read"}


def difference(name, field, text):
    if name in RULES and text != "-":
        return "-", RULES[name]
    if name == "updated.pdf" and (field, text) in (("Title", "New title"), ("Keywords", "-")):
        return {"Title": "Sales", "Keywords": "a b"}[field], "second and later parts of a table aren't read"
    if field in TAGS and field not in answers.DATES and text == "-" and name == "picture.pdf":
        return "", "texts that the dictionary lacks are set to empty ones"
    return None


answers.compare(FOLDER, make, lambda name, field: (TAGS.get(field),), difference,
                lambda folder: {name: ask(name) for name in answers.documents(folder)})
