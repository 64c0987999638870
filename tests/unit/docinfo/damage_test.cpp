// Damaged files: each truncation and many changed bits.
#include "docinfo/html.h"
#include "docinfo/jpeg.h"
#include "docinfo/mail.h"
#include "docinfo/pdf.h"
#include "docinfo/rtf.h"
#include "docinfo/tiff.h"
#include "docinfo/word2.h"
#include "docinfo/wordperfect.h"
#include "unit/docinfo/document_in_memory.h"
#include "unit/docinfo/pdf_builder.h"
#include "unit/docinfo/tiff_builder.h"
#include "unit/docinfo/word_builder.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <process.h>

#include <random>
#include <vector>

using namespace qx;
using qxtest::ReadRecord;
using qxtest::ReadTIFFFile;
using qxtest::TiffBuilder;

namespace
{

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int kFlips = 2'000;
#else
constexpr int kFlips = 10'000;
#endif

std::string SmallTiff()
{
    TiffBuilder tiff(true);
    tiff.Add(256, 3, 8).Add(257, 3, 6).AddText(269, "title").AddText(306, "2001:02:03 04:05:06");
    tiff.AddRational(33434, 5, 1, 125).AddExif().EndDirectory();
    tiff.AddText(36867, "2001:02:03 04:05:06").EndDirectory();
    return tiff.Bytes();
}

std::vector<std::pair<qxtest::Reader, std::string>> SmallFiles()
{
    return {
        {ReadTIFFFile, SmallTiff()},
        {ReadJPEG, qxtest::JpegOf({{0xE0, "JFIF"}, {0xE1, std::string("Exif\0\0", 6) + SmallTiff()}})},
        {ReadPDF, qxtest::PdfOf(
                      {{"<</Title (a\\(b) /Author <FEFF0047> /ModDate (D:2012) /K [1 2] /D <</A true>> /R 1 0 R>>"}})},
        {ReadHTML, "<head><title>&auml;&#65;</title><o:DocumentProperties><o:Author>a</o:Author></o:DocumentProperties>"
                   "<meta name=\"author\" content=\"x\"></head>"},
        {ReadMail, "From: =?utf-8?Q?J=C3=BC?= (x =?utf-8?B?YQ==?=) \"q\" <a@b.de>\r\nTo: a@xn--bcher-kva.de\r\n"
                   "Subject: =?utf-8*de?Q?_?=\r\n x\r\nDate: Tue, 03 Feb 2015 10:20:30 +0100\r\n\r\n"},
        {ReadRTF, R"({\rtf1{\info{\title a\'e4}{\creatim\yr2001\mo2}}})"},
        {ReadWord2, qxtest::Word2Of({"a", "b", "title", "", "author"})},
        {ReadWordPerfect, qxtest::WordPerfectOf({qxtest::WordPerfectEntry('\x12', 0, 56)},
                              qxtest::WordPerfectRecord(17, u"title") + qxtest::WordPerfectRecord(1, u"a\uF90A"))},
    };
}

unsigned WINAPI ReadSmallFiles(void* failures)
{
    for (const auto& [reader, bytes] : SmallFiles())
        if (ReadRecord(reader, bytes).Result() != 0)
            ++*static_cast<int*>(failures);
    return 0;
}

} // namespace

TEST(DocumentReaders, NeedLittleStack)
{
    constexpr unsigned kStackSize = 256 * 1024; // on windows a program may have more
    int failures = 0;
    const auto thread =
        reinterpret_cast<HANDLE>(_beginthreadex(nullptr, kStackSize, ReadSmallFiles, &failures, 0, nullptr));
    EXPECT_EQ(WaitForSingleObject(thread, INFINITE), WAIT_OBJECT_0);
    CloseHandle(thread);
    EXPECT_EQ(failures, 0);
}

TEST(DocumentReaders, BearDamage)
{
    std::mt19937 random(1);
    for (const auto& file : SmallFiles())
    {
        const qxtest::Reader reader = file.first;
        const std::string& whole = file.second;
        EXPECT_EQ(ReadRecord(reader, whole).Result(), 0);
        const auto check = [&](const std::string& bytes)
        {
            const int result = ReadRecord(reader, bytes).Result();
            EXPECT_TRUE(result == 0 || result == -1) << result;
        };
        for (std::size_t length = 0; length < whole.size(); ++length)
            check(whole.substr(0, length));
        for (int i = 0; i < kFlips; ++i)
        {
            std::string bytes = whole;
            for (unsigned count = random() % 4 + 1; count > 0; --count)
                bytes[random() % bytes.size()] ^= static_cast<char>(1u << random() % 8);
            check(bytes);
        }
    }
}
