#!/usr/bin/env python3
"""Writes the mails of this folder and answers.tsv, with what Python's email package reads from them.

Each row of answers.tsv names a file and a field, the answer of Python, the answer of the reader ("=" if it is the same)
and, if it differs, the rule that makes it differ. Dates are in UTC.
"""
import base64
import datetime
import email
import email.message
import email.policy
import pathlib
import quopri

FOLDER = pathlib.Path(__file__).parent
FIELDS = {"Subject": "Title", "From": "Author", "To": "LastAuthor", "Date": "Created"}  # of mails and records

DIFFERENCES = {
    ("folded.eml", "Subject"): ("The subject is long enough for a second line, so that unfolding takesthe blank in front "
                                "of a word", "the first character of a continued line goes with the line break"),
    ("lower_case.eml", "Subject"): ("=?utf-8?q?Gr=C3=BC=C3=9Fe?=", "the letter of an encoding is an upper-case one"),
    ("words.eml", "Subject"): ("Gr\u00fc\u00dfe an  alle", "the blank between encoded words stays"),
    **{("line_feeds.eml", field): ("-", "lines end with CR LF") for field in FIELDS},
    ("charsets.eml", "Subject"): ("", "charsets with shift sequences don't convert"),
    ("charsets.eml", "From"): ('"Doe, Jane" <jane@example.org> (officeM\u00fcnchen)',
                               "comments stay, and a word in one replaces the character in front of it"),
    ("charsets.eml", "To"): ("rene@b\u00fccher.example", "the labels of a lone address are decoded"),
}


def q_word(text, charset):
    body = quopri.encodestring(text.encode(charset), header=True).decode().replace("=\n", "")
    return f"=?{charset}?Q?{body}?="


def b_word(text, charset):
    return f"=?{charset}?B?{base64.b64encode(text.encode(charset)).decode()}?="


def modern(**headers):
    """A mail whose headers the package encodes and folds."""
    return mail_of(email.message.EmailMessage(policy=email.policy.SMTP), headers)


def raw(line_end="\r\n", **headers):
    """A mail with headers as other programs write them."""
    policy = email.policy.compat32.clone(linesep=line_end, max_line_length=None)
    return mail_of(email.message.Message(policy=policy), headers)


def mail_of(mail, headers):
    for name, value in headers.items():
        mail[name] = value
    set_body = getattr(mail, "set_content", mail.set_payload)
    set_body("Hello.\n")
    return mail.as_bytes()


def mails():
    yield "folded.eml", modern(
        Subject="The subject is long enough for a second line, so that unfolding takes the blank in front of a word",
        From='"Doe, Jane" <jane@example.org>',
        To="John <john@example.org>, mary@example.org",
        Date="Tue, 03 Feb 2015 10:20:30 +0100")
    yield "lower_case.eml", modern(
        Subject="Gr\u00fc\u00dfe", From="jane@example.org", To="john@example.org", Date="Sun, 31 Dec 2017 23:30:15 -0130")
    yield "words.eml", raw(
        Subject=q_word("Gr\u00fc\u00dfe an", "iso-8859-1") + " " + b_word(" alle", "utf-8"),
        From=q_word("J\u00fcrgen Gro\u00df", "utf-8") + " <juergen@example.org>",
        To=b_word("\u0418\u0432\u0430\u043d", "koi8-r") + " <ivan@example.org>, " + b_word("\u738b", "GB2312") +
        " <wang@example.org>",
        Date="Mon, 06 Jul 2015 22:20:30 EDT")
    yield "charsets.eml", raw(
        Subject=b_word("\u65e5\u672c\u8a9e", "iso-2022-jp"),
        From='"Doe, Jane" <jane@example.org> (office ' + b_word("M\u00fcnchen", "utf-8") + ")",
        To="rene@" + "b\u00fccher.example".encode("idna").decode(),
        Date="06 Jul 2015 22:20:30 GMT")
    yield "line_feeds.eml", raw("\n", Subject="s", From="jane@example.org", To="john@example.org",
                                Date="Tue, 03 Feb 2015 10:20:30 +0100")


def answer(mail, field):
    value = mail[field]
    if field == "Date":
        utc = value.datetime.astimezone(datetime.timezone.utc)
        return f"{utc.year}-{utc.month}-{utc.day} {utc.hour}:{utc.minute}:{utc.second}"
    return str(value)


rows = []
for file_name, data in mails():
    (FOLDER / file_name).write_bytes(data)
    parsed = email.message_from_bytes(data, policy=email.policy.default)
    for header, field in FIELDS.items():
        ours, *why = DIFFERENCES.get((file_name, header), ("=",))
        rows.append("\t".join((file_name, field, answer(parsed, header), ours, *why)) + "\n")
(FOLDER / "answers.tsv").write_text("".join(rows), encoding="utf-8", newline="\n")
