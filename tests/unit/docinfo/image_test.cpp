// TIFF directories and the EXIF block of JPEG files.
#include "docinfo/jpeg.h"
#include "docinfo/tiff.h"
#include "unit/docinfo/document_in_memory.h"
#include "unit/docinfo/tiff_builder.h"

#include <gtest/gtest.h>

#include <vector>

using namespace qx;
using qxtest::DateOf;
using qxtest::JpegOf;
using qxtest::ReadRecord;
using qxtest::ReadTIFFFile;
using qxtest::TextOf;
using qxtest::TiffBuilder;

namespace
{

constexpr std::uint16_t kByte = 1, kAscii = 2, kShort = 3, kLong = 4, kRational = 5, kUndefined = 7,
                        kSignedRational = 10;

} // namespace

TEST(TiffReader, Fields)
{
    for (const bool isBigEndian : {false, true})
    {
        SCOPED_TRACE(isBigEndian);
        TiffBuilder tiff(isBigEndian);
        tiff.Add(256, kShort, 800).Add(257, kLong, 600);
        tiff.AddText(269, "title").AddText(270, "abc").AddText(272, "model").AddText(306, "2001:02:03 04:05:06");
        tiff.AddText(315, "artist").AddText(33432, "copyright").EndDirectory();
        tiff.Add(256, kByte, 40).Add(257, kShort, 30).AddText(272, "scanner").EndDirectory();
        tiff.Add(256, kShort, 7).EndDirectory(); // without height there is no size
        const ReadRecord record(ReadTIFFFile, tiff.Bytes());
        EXPECT_EQ(record.Result(), 0);
        EXPECT_EQ(TextOf(record->Title), "title");
        EXPECT_EQ(TextOf(record->Subject), "abc");
        EXPECT_EQ(TextOf(record->Author), "artist, scanner");
        EXPECT_EQ(TextOf(record->Comments), "copyright, (800 * 600 px), (40 * 30 px)");
        EXPECT_EQ(DateOf(record->Created), "2001-2-3 4:5:6");
    }
}

TEST(TiffReader, CameraSettings)
{
    struct Setting
    {
        std::uint16_t tag;
        std::uint16_t type;
        std::uint32_t numerator;
        std::uint32_t denominator;
        const char* comments;
    };
    const Setting settings[] = {
        {33434, kRational, 1, 125, "t=1/125 s"},
        {33434, kRational, 2, 1, "t=2 s"},
        {33434, kRational, 0, 1, "-"},
        {33434, kRational, 1, 0, "-"},
        {33434, kSignedRational, static_cast<std::uint32_t>(-1), 125, "-"},
        {33434, kUndefined, 1, 125, "-"},
        {33437, kRational, 28, 10, "f=3"},
        {37382, kSignedRational, 12345, 1000, "d=12.3 m"},
    };
    for (const Setting& setting : settings)
    {
        TiffBuilder tiff(true);
        tiff.AddRational(setting.tag, setting.type, setting.numerator, setting.denominator).EndDirectory();
        const ReadRecord record(ReadTIFFFile, tiff.Bytes());
        EXPECT_EQ(TextOf(record->Comments), setting.comments) << setting.tag;
        EXPECT_EQ(record->remark == L"bad TIFF data type", setting.type == kUndefined);
    }
    TiffBuilder none(false);
    none.Add(33434, kRational, 8, 0).EndDirectory();
    EXPECT_EQ(TextOf(ReadRecord(ReadTIFFFile, none.Bytes())->Comments), "-"); // no value at all
}

TEST(TiffReader, BadHeaders)
{
    using namespace std::string_view_literals;
    const std::pair<std::string_view, const wchar_t*> headers[] = {
        {"II*\0"sv, L"error reading header"},
        {"XY*\0\0\0\0\0"sv, L"Not a TIFF file, bad magic number 22872 (0x5958)"},
        {"II+\0\0\0\0\0"sv, L"Not a TIFF file, bad version number 43 (0x2b)"},
    };
    for (const auto& [bytes, remark] : headers)
    {
        const ReadRecord record(ReadTIFFFile, bytes);
        EXPECT_EQ(record.Result(), -1);
        EXPECT_EQ(record->remark.View(), remark);
    }
    EXPECT_EQ(ReadRecord(ReadTIFFFile, "II*\0\0\0\0\0"sv).Result(), 0);
}

TEST(TiffReader, DamagedDirectories)
{
    TiffBuilder tiff(false);
    tiff.AddText(269, "ab").AddText(270, "cd").EndDirectory();
    const std::string whole = tiff.Bytes();
    const ReadRecord cut(ReadTIFFFile, whole.substr(0, 8 + 2 + 12 + 5));
    EXPECT_EQ(TextOf(cut->Title), "ab");
    EXPECT_EQ(TextOf(cut->Subject), "-");
    EXPECT_EQ(cut->remark.View(), L"Could only read 1 of 2 entries in directory at offset 0x8");
    EXPECT_EQ(ReadRecord(ReadTIFFFile, whole.substr(0, 9))->remark.View(), L"read error directory count");

    TiffBuilder loop(false);
    loop.Add(256, kShort, 8).Add(257, kShort, 6).EndDirectory(8); // the next directory is this one
    EXPECT_EQ(TextOf(ReadRecord(ReadTIFFFile, loop.Bytes())->Comments), "(8 * 6 px)");

    TiffBuilder text(false);
    text.Add(269, kAscii, 0, 0xFFFFFFFF).Add(270, kAscii, 1, 0xFFFFFFFF).EndDirectory();
    EXPECT_EQ(TextOf(ReadRecord(ReadTIFFFile, text.Bytes())->Title), "II*"); // up to the first zero byte
}

// Many entries may share one long text of the file.
TEST(TiffReader, SharedTexts)
{
    TiffBuilder tiff(false);
    tiff.AddText(270, std::string(4'000, 'x'));
    for (int i = 0; i < 4'000; ++i)
        tiff.Add(272, kAscii, 8 + 2 + 4'001 * 12 + 4, 4'000);
    tiff.EndDirectory();
    const ReadRecord record(ReadTIFFFile, tiff.Bytes());
    EXPECT_EQ(TextOf(record->Author).substr(3'998, 5), "xx, x");
    EXPECT_LE(TextOf(record->Author).size(), tiff.Bytes().size() + 4096);
}

// Each directory appends to a text that many others share, and may be read once only.
TEST(TiffReader, GrowsWithinBounds)
{
    TiffBuilder tiff(false);
    for (int directory = 0; directory < 5'000; ++directory)
    {
        for (int i = 0; i < 20; ++i)
            tiff.AddText(272, "abc");
        tiff.EndDirectory();
    }
    const ReadRecord record(ReadTIFFFile, tiff.Bytes());
    EXPECT_EQ(TextOf(record->Author).size(), 4096u * 20 * 5 - 2);
}

TEST(JpegReader, Segments)
{
    TiffBuilder exif(true);
    exif.AddText(271, "make").AddText(306, "2001:02:03 04:05:06").Add(37510, kUndefined, 0).AddExif().EndDirectory(0);
    exif.AddText(36867, "1999:01:02 03:04:05").AddRational(33437, kRational, 4, 1).EndDirectory();
    const std::string block = std::string("Exif\0\0", 6) + exif.Bytes();

    const ReadRecord photo(ReadJPEG, JpegOf({{0xE0, "JFIF"}, {0xE1, block}}));
    EXPECT_EQ(photo.Result(), 0);
    EXPECT_EQ(DateOf(photo->Created), "1999-1-2 3:4:5");
    EXPECT_EQ(TextOf(photo->Comments), "f=4");
    EXPECT_EQ(TextOf(photo->Subject), ""); // a comment that isn't ASCII
    // In a TIFF file itself the EXIF directory is passed over.
    EXPECT_EQ(DateOf(ReadRecord(ReadTIFFFile, exif.Bytes())->Created), "2001-2-3 4:5:6");

    const std::string bad[] = {JpegOf({{0xE1, "http://"}, {0xE1, block}}), JpegOf({{0xE0, "JFIF"}}), "", "\xFF",
        "\xFF\xD8\xFF\xE0", std::string("\xFF\xD8\xFF\xE0\0\1\xFF\xE1", 8),
        std::string("\xFF\xD8\xFF\xE1\0\0", 6) + block, std::string("\xFF\xD8") + "Exif"};
    for (const std::string& bytes : bad)
        EXPECT_EQ(ReadRecord(ReadJPEG, bytes).Result(), -1) << bytes.size();
}
