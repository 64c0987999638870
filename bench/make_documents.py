"""make_documents.py FOLDER: makes 250 documents each of eight kinds, of a few hundred words and with all the properties
that the kind has. Each run makes the same bytes."""

import base64
import io
import pathlib
import random
import struct
import sys
import zipfile
import zlib

FOLDER = pathlib.Path(sys.argv[1])
WORDS = ("report page size title author printer margin column header footer line total sales region north south value date format "
         "Größe Straße Übersicht café naïve tröste font color width height index table chart image export import user server").split()
AUTHORS = ("Jürgen Müller", "Jane Stone", "Zoë Noël")
OFFICE = "http://schemas.openxmlformats.org/package/2006/"
choose = random.Random(2)


def words(least, most):
    return " ".join(choose.choice(WORDS) for _ in range(choose.randint(least, most)))


def archive(**members):
    file = io.BytesIO()
    with zipfile.ZipFile(file, "w", zipfile.ZIP_DEFLATED) as target:
        for name, text in members.items():
            target.writestr(zipfile.ZipInfo(name, (2020, 1, 2, 3, 4, 6)), text, zipfile.ZIP_DEFLATED)
    return file.getvalue()


def docx(title, subject, author, keywords, body):
    return archive(**{
        "[Content_Types].xml": f'<?xml version="1.0"?><Types xmlns="{OFFICE}content-types"/>',
        "_rels/.rels": f'<?xml version="1.0"?><Relationships xmlns="{OFFICE}relationships"><Relationship Id="r1" Type="{OFFICE}'
                       'relationships/metadata/core-properties" Target="docProps/core.xml"/></Relationships>',
        "word/document.xml": f"<w:document>{body}</w:document>",
        "docProps/core.xml": f'<?xml version="1.0" encoding="UTF-8" standalone="yes"?>\n<cp:coreProperties xmlns:cp="{OFFICE}metadata/'
                             'core-properties" xmlns:dc="http://purl.org/dc/elements/1.1/" xmlns:dcterms="http://purl.org/dc/terms/" '
                             'xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance">'
                             f"<dc:title>{title}</dc:title><dc:subject>{subject}</dc:subject><dc:creator>{author}</dc:creator>"
                             f"<cp:keywords>{keywords}</cp:keywords><cp:lastModifiedBy>{author}</cp:lastModifiedBy>"
                             '<dcterms:created xsi:type="dcterms:W3CDTF">2019-03-04T08:15:30Z</dcterms:created>'
                             '<dcterms:modified xsi:type="dcterms:W3CDTF">2020-03-04T08:15:30Z</dcterms:modified></cp:coreProperties>'})


def odt(title, subject, author, keywords, body):
    space = "urn:oasis:names:tc:opendocument:xmlns:"
    return archive(**{
        "mimetype": "application/vnd.oasis.opendocument.text",
        "content.xml": f"<c>{body}</c>",
        "meta.xml": f'<?xml version="1.0" encoding="UTF-8"?>\n<office:document-meta xmlns:office="{space}office:1.0" '
                    f'xmlns:meta="{space}meta:1.0" xmlns:dc="http://purl.org/dc/elements/1.1/" office:version="1.2"><office:meta>'
                    f"<meta:initial-creator>{author}</meta:initial-creator><meta:creation-date>2019-03-04T08:15:30</meta:creation-date>"
                    f"<dc:date>2020-03-04T08:15:30</dc:date><dc:creator>{author}</dc:creator><dc:title>{title}</dc:title>"
                    f"<dc:subject>{subject}</dc:subject><meta:keyword>{keywords}</meta:keyword></office:meta></office:document-meta>"})


def pdf(title, subject, author, keywords, body):
    def text(value):
        return f"<FEFF{value.encode('utf-16-be').hex().upper()}>"

    page = zlib.compress(f"BT ({body}) Tj ET".encode("latin-1"))
    objects = [
        b"<< /Type /Catalog /Pages 3 0 R >>",
        f"<< /Title {text(title)} /Subject {text(subject)} /Author {text(author)} /Keywords {text(keywords)} "
        "/CreationDate (D:20190304081530+01'00') /ModDate (D:20200304081530Z) >>".encode(),
        b"<< /Type /Pages /Kids [4 0 R] /Count 1 >>",
        b"<< /Type /Page /Parent 3 0 R /MediaBox [0 0 200 200] /Contents 5 0 R >>",
        b"<< /Length %d /Filter /FlateDecode >>\nstream\n%s\nendstream" % (len(page), page)]
    file, table = b"%PDF-1.4\n", b"xref\n0 6\n0000000000 65535 f \n"
    for number, content in enumerate(objects, 1):
        table += b"%010d 00000 n \n" % len(file)
        file += b"%d 0 obj\n%s\nendobj\n" % (number, content)
    return file + table + b"trailer\n<< /Size 6 /Root 1 0 R /Info 2 0 R >>\nstartxref\n%d\n%%%%EOF\n" % len(file)


def eml(title, subject, author, keywords, body):
    def encoded(text):
        return f"=?utf-8?B?{base64.b64encode(text.encode()).decode()}?="

    return ("Received: from a.example by b.example; Mon, 4 Mar 2019 08:15:30 +0100\r\nMessage-ID: <1@example.org>\r\n"
            f"From: {encoded(author)} <a@example.org>\r\nTo: {encoded(author)} <b@example.org>, c@example.org\r\n"
            f"Subject: {encoded(title)}\r\nDate: Mon, 4 Mar 2019 08:15:30 +0100\r\nMIME-Version: 1.0\r\n"
            f"Content-Type: text/plain; charset=utf-8\r\n\r\n{body}\r\n").encode()


def html(title, subject, author, keywords, body):
    return (f'<!DOCTYPE html>\n<html>\n<head>\n<meta charset="utf-8">\n<title>{title}</title>\n<meta name="author" content="{author}">\n'
            f'<meta name="description" content="{subject}">\n<meta name="keywords" content="{keywords}">\n</head>\n'
            f"<body><p>{body}</p></body></html>\n").encode()


def rtf(title, subject, author, keywords, body):
    text = ("{\\rtf1\\ansi\\ansicpg1252{\\fonttbl{\\f0 Arial;}}{\\info{\\title %s}{\\subject %s}{\\author %s}{\\keywords %s}"
            "{\\creatim\\yr2019\\mo3\\dy4\\hr8\\min15}{\\revtim\\yr2020\\mo3\\dy4\\hr8\\min15}}\\pard %s\\par}"
            % (title, subject, author, keywords, body))
    return "".join(c if c.isascii() else f"\\'{ord(c):02x}" for c in text).encode()


def directory(entries):
    """An image file directory: texts, and numbers of 32 bits."""
    data, rows, begin = b"", b"", 8 + 2 + 12 * len(entries) + 4
    for tag, value in sorted(entries.items()):
        if isinstance(value, int):
            rows += struct.pack("<HHII", tag, 4, 1, value)
            continue
        text = value.encode("latin-1") + b"\0"
        rows += struct.pack("<HHII", tag, 2, len(text), begin + len(data))
        data += text + b"\0" * (len(text) % 2)
    return b"II*\0" + struct.pack("<IH", 8, len(entries)) + rows + bytes(4) + data


def image_texts(title, subject, author):
    return {270: subject, 271: "Maker", 272: "Model of a camera", 306: "2019:03:04 08:15:30", 315: author, 33432: "(c) " + author}


def tif(title, subject, author, keywords, body):
    size = {256: 64, 257: 16, 258: 8, 259: 1, 262: 1, 277: 1, 278: 16, 279: 1024}
    entries = {**image_texts(title, subject, author), 269: title, **size, 273: 0}
    entries[273] = len(directory(entries))
    return directory(entries) + choose.randbytes(1024)


def jpg(title, subject, author, keywords, body):
    exif = b"Exif\0\0" + directory(image_texts(title, subject, author))
    table = b"\x01" + bytes(15) + b"\0"
    return (bytes.fromhex("ffd8ffe000104a46494600010100000100010000") + b"\xff\xe1" + struct.pack(">H", len(exif) + 2) + exif
            + b"\xff\xdb\0\x43\0" + b"\x01" * 64 + bytes.fromhex("ffc0000b080008000801011100") + b"\xff\xc4\0\x14\0" + table
            + b"\xff\xc4\0\x14\x10" + table + bytes.fromhex("ffda0008010100003f003fffd9"))


FOLDER.mkdir(parents=True, exist_ok=True)
for number in range(250):
    properties = words(2, 5), words(1, 3), choose.choice(AUTHORS), words(1, 4), words(300, 900)
    for make in (docx, odt, pdf, eml, html, rtf, tif, jpg):
        (FOLDER / f"{number:04}.{make.__name__}").write_bytes(make(*properties))
