// TIFF directories and the EXIF block of JPEG files.
#include "docinfo/jpeg.h"
#include "unit/docinfo/document_in_memory.h"
#include "unit/docinfo/tiff_builder.h"

#include <tuple>

using namespace qx;
using namespace qxtest;
using namespace std::string_view_literals;

namespace
{

constexpr std::uint16_t kByte = 1, kAscii = 2, kShort = 3, kLong = 4, kRational = 5, kUndefined = 7,
                        kSignedRational = 10;

} // namespace

TEST(TiffReader, Fields)
{
    for (const bool isBigEndian : {false, true})
    {
        TiffBuilder tiff(isBigEndian);
        tiff.Add(256, kShort, 800).Add(257, kLong, 600);
        tiff.AddText(269, "title").AddText(270, "abc").AddText(272, "model").AddText(306, "2001:02:03 04:05:06");
        tiff.AddText(315, "artist").AddText(33432, "copyright").EndDirectory();
        tiff.Add(256, kByte, 40).Add(257, kShort, 30).AddText(272, "scanner").EndDirectory();
        tiff.Add(256, kShort, 7).EndDirectory(); // without height there is no size
        EXPECT_EQ(ReadRecord(ReadTIFFFile, tiff.Bytes()).ResultAndSummary(),
            "0 title|abc|artist, scanner|-|-|copyright, (800 * 600 px), (40 * 30 px)|2001-2-3 4:5:6|-");
    }
}

TEST(TiffReader, CameraSettings)
{
    const std::tuple<std::uint16_t, std::uint16_t, std::uint32_t, std::uint32_t, const char*> settings[] = {
        {33434, kRational, 1, 125, "t=1/125 s"}, {33434, kRational, 2, 1, "t=2 s"}, {33434, kRational, 0, 1, "-"},
        {33434, kRational, 1, 0, "-"}, {33434, kSignedRational, static_cast<std::uint32_t>(-1), 125, "-"},
        {33434, kUndefined, 1, 125, "-"}, {33437, kRational, 28, 10, "f=3"},
        {37382, kSignedRational, 12345, 1000, "d=12.3 m"}};
    for (const auto& [tag, type, numerator, denominator, comments] : settings)
    {
        TiffBuilder tiff(true);
        tiff.AddRational(tag, type, numerator, denominator).EndDirectory();
        const ReadRecord record(ReadTIFFFile, tiff.Bytes());
        EXPECT_EQ(TextOf(record->Comments), comments) << tag;
        EXPECT_EQ(record->remark == L"bad TIFF data type", type == kUndefined);
    }
    TiffBuilder none(false);
    none.Add(33434, kRational, 8, 0).EndDirectory();
    EXPECT_EQ(TextOf(ReadRecord(ReadTIFFFile, none.Bytes())->Comments), "-"); // no value at all
}

TEST(TiffReader, DamagedFiles)
{
    TiffBuilder tiff(false);
    tiff.AddText(269, "ab").AddText(270, "cd").EndDirectory();
    const std::string& whole = tiff.Bytes();
    const std::tuple<std::string_view, int, const wchar_t*> files[] = {{"II*\0"sv, -1, L"error reading header"},
        {"XY*\0\0\0\0\0"sv, -1, L"Not a TIFF file, bad magic number 22872 (0x5958)"},
        {"II+\0\0\0\0\0"sv, -1, L"Not a TIFF file, bad version number 43 (0x2b)"}, {"II*\0\0\0\0\0"sv, 0, L""},
        {std::string_view(whole).substr(0, 9), 0, L"read error directory count"},
        {std::string_view(whole).substr(0, 8 + 2 + 12 + 5), 0,
            L"Could only read 1 of 2 entries in directory at offset 0x8"}};
    for (const auto& [bytes, result, remark] : files)
    {
        const ReadRecord record(ReadTIFFFile, bytes);
        EXPECT_EQ(record.Result(), result);
        EXPECT_EQ(record->remark.View(), remark);
        EXPECT_EQ(record.Summary(), bytes.size() > 9 ? "ab|-|-|-|-|-|-|-" : "-|-|-|-|-|-|-|-");
    }

    TiffBuilder circle(false);
    circle.Add(256, kShort, 8).Add(257, kShort, 6).Add(269, kAscii, 0, 0xFFFFFFFF).Add(270, kAscii, 1, 0xFFFFFFFF);
    circle.EndDirectory();
    std::string bytes = circle.Bytes();
    bytes[bytes.size() - 4] = 8; // the directory's link to the next one leads to itself
    const ReadRecord record(ReadTIFFFile, bytes);
    EXPECT_EQ(TextOf(record->Title), "II*"); // up to the first zero byte
    EXPECT_EQ(TextOf(record->Comments), "(8 * 6 px)");
}

// Texts are bounded although many entries share one text of the file, and many directories append to one field.
TEST(TiffReader, GrowsWithinBounds)
{
    TiffBuilder shared(false);
    shared.AddText(270, std::string(4'000, 'x'));
    for (int i = 0; i < 4'000; ++i)
        shared.Add(272, kAscii, 8, 4'000);
    shared.EndDirectory();
    const std::string author = TextOf(ReadRecord(ReadTIFFFile, shared.Bytes())->Author);
    EXPECT_EQ(author.substr(3'998, 5), "xx, x");
    EXPECT_LE(author.size(), shared.Bytes().size() + 4096);

    TiffBuilder tiff(false);
    for (int directory = 0; directory < 5'000; ++directory)
    {
        for (int i = 0; i < 20; ++i)
            tiff.AddText(272, "abc");
        tiff.EndDirectory();
    }
    EXPECT_EQ(TextOf(ReadRecord(ReadTIFFFile, tiff.Bytes())->Author).size(), 4096u * 20 * 5 - 2);
}

// Directories that share their entries. The values of the entries are far apart.
TEST(TiffReader, BoundedTime)
{
    constexpr std::uint16_t kDirectories = 1350, kEntries = 2 * kDirectories;
    constexpr std::uint32_t kFirst = 8, kStep = 24, kFar = 66'000;
    std::string bytes(kFar + 4096, '\1');
    const auto put = [&](std::size_t at, std::uint32_t value, int size)
    {
        for (; size != 0; --size, value >>= 8)
            bytes[at + static_cast<std::size_t>(size) - 1] = static_cast<char>(value);
    };
    bytes.replace(0, 4, "MM\0*", 4);
    put(4, kFirst, 4);
    put(kFirst, kEntries, 2);
    for (std::uint32_t i = 0; i < 2 * kEntries; ++i)
    {
        const std::uint32_t entry = kFirst + 2 + 12 * i;
        put(entry, 33437, 2);
        put(entry + 2, kRational, 2);
        put(entry + 4, 1, 4);
        put(entry + 8, i % 2 == 0 ? kFar : kEntries, 4); // each second value is the count of the next directory, too
        if (i >= kEntries && i % 2 == 0)
            put(entry, kFirst + kStep * ((i - kEntries) / 2 + 1), 4); // the link to the next directory
    }
    qxtest::ExpectQuick(ReadTIFFFile, bytes);
}

TEST(JpegReader, Segments)
{
    TiffBuilder tiff(true);
    tiff.AddText(36867, "1999:01:02 03:04:05").AddRational(33437, kRational, 4, 1);
    const std::uint32_t exif = tiff.EndLoneDirectory();
    tiff.AddText(306, "2001:02:03 04:05:06").Add(37510, kUndefined, 0).Add(34665, kLong, exif).EndDirectory();
    const std::string block = std::string("Exif\0\0", 6) + tiff.Bytes();

    EXPECT_EQ(ReadRecord(ReadJPEG, JpegOf({{0xE0, "JFIF"}, {0xE1, block}})).ResultAndSummary(),
        "0 -||-|-|-|f=4|1999-1-2 3:4:5|-"); // the user comment isn't ASCII
    // In a TIFF file the EXIF directory is skipped.
    EXPECT_EQ(ReadRecord(ReadTIFFFile, tiff.Bytes()).Summary(), "-||-|-|-|-|2001-2-3 4:5:6|-");

    // An ASCII comment becomes the subject if there is no other one. A directory isn't read twice.
    for (const char* const subject : {"", "subject"})
    {
        TiffBuilder comment(true);
        if (*subject != 0)
            comment.AddText(270, subject);
        comment.AddText(37510, "comment");
        comment.Add(34665, kLong, 8 + 8 + static_cast<std::uint32_t>(*subject != 0 ? 8 : 0)).EndDirectory();
        const ReadRecord record(ReadJPEG, JpegOf({{0xE1, std::string("Exif\0\0", 6) + comment.Bytes()}}));
        EXPECT_EQ(TextOf(record->Subject), *subject != 0 ? subject : "comment");
    }

    const std::string bad[] = {JpegOf({{0xE1, "http://"}, {0xE1, block}}), JpegOf({{0xE0, "JFIF"}}), "", "\xFF",
        "\xFF\xD8\xFF\xE0", std::string("\xFF\xD8\xFF\xE0\0\1\xFF\xE1", 8),
        std::string("\xFF\xD8\xFF\xE1\0\0", 6) + block, std::string("\xFF\xD8") + "Exif"};
    for (const std::string& bytes : bad)
        EXPECT_EQ(ReadRecord(ReadJPEG, bytes).Result(), -1) << bytes.size();
}
