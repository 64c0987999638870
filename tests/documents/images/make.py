#!/usr/bin/python3
"""Makes the images of this folder with ImageMagick and exiftool, and answers.tsv with what exiftool reads from them.

Needs the Debian packages imagemagick and libimage-exiftool-perl. The tests run neither of them.
"""
import pathlib
import sys

FOLDER = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(FOLDER.parent))
import answers  # noqa: E402

TEXTS = ("-DocumentName=Page 1", "-ImageDescription=A red square", "-Make=Maker", "-Model=Scanner 2", "-Artist=Ann Smith",
         "-Copyright=(c) Ann", "-ModifyDate=2001:02:03 04:05:06")
PHOTO = ("-ImageDescription=At sea", "-Model=Camera", "-ModifyDate=2002:03:04 05:06:07",
         "-DateTimeOriginal=2001:02:03 04:05:06", "-ExposureTime=1/125", "-FNumber=2.8", "-SubjectDistance=12.345",
         "-ExifImageWidth=640")
TAGS = {"Title": ("DocumentName",), "Subject": ("ImageDescription", "UserComment"), "Author": ("Artist", "Model"),
        "Comments": ("Copyright",), "Created": ("DateTimeOriginal", "ModifyDate")}


def make(_):
    for name, options, tags in (
            ("little.tif", ("-endian", "LSB"), TEXTS), ("big.tif", ("-endian", "MSB"), TEXTS),
            ("plain.tif", ("-compress", "LZW"), ()), ("texts.jpg", (), ("-exifbyteorder=MM", *TEXTS)),
            ("photo.jpg", (), ("-exifbyteorder=II", *PHOTO)), ("bare.jpg", (), ()),
            ("comment.jpg", (), ("-UserComment=By hand", "-Artist=", "-ModifyDate=2001:02:03 04:05:06"))):
        answers.run("convert", "-size", "24x16", "xc:red", *options, "+set", "date:create", FOLDER / name)
        if tags:
            answers.run("exiftool", "-overwrite_original", "-codedcharacterset=", *tags, FOLDER / name)
    answers.run("convert", "-size", "8x8", "xc:red", "-size", "16x8", "xc:blue", FOLDER / "pages.tif")


SIZES = {"big.tif": "(c) Ann, (24 * 16 px)", "little.tif": "(c) Ann, (24 * 16 px)", "plain.tif": "(24 * 16 px)",
         "pages.tif": "(8 * 8 px), (16 * 8 px)"}


def difference(name, field, text):
    if field == "Comments" and name in SIZES:
        return SIZES[name], "the size of each picture is appended"
    if field == "Comments" and name == "photo.jpg":
        return "t=1/125 s, f=3, d=12.3 m", "camera settings are appended"
    if text == "By hand":
        return "", "a comment of a photo is read if its type is ASCII"
    return None


answers.compare(FOLDER, make, lambda name, field: TAGS.get(field, ()), difference)
