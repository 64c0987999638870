#include "files/file.h"
#include "files/utf_type.h"

#include "support/debug_lines.h"
#include "support/temp_folder.h"
#include "unit/files/opened.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <tuple>

using namespace qx;
using namespace qxtest;
using namespace std::string_literals;

namespace
{

std::string UTF16LE(const std::wstring_view text)
{
    return {reinterpret_cast<const char*>(text.data()), 2 * text.size()};
}

// Returns a text whose UTF-16 form has no zero in its first two bytes, and no valid UTF-8 before the first zero byte.
String LongText()
{
    String text;
    for (int i = 0; i < 20; ++i)
        text += L"\u4E2D\u6587, Gr\u00FC\u00DFe.\r\n";
    return text;
}

} // namespace

TEST(UTFTypeOfFile, ByMarkZeroBytesAndContent)
{
    const String text = LongText();
    const std::string ascii(201, 'a'), filler(190, 'x');
    const std::tuple<const char*, std::string, UTFType, std::int64_t> cases[] = {{"empty", "", UTFType::Unknown, 0},
        {"one byte", "\xFF", UTFType::Unknown, 0}, {"mark alone, little", "\xFF\xFE", UTFType::UTF16LE, 2},
        {"mark alone, big", "\xFE\xFF", UTFType::UTF16BE, 2}, {"mark and a byte", "\xFF\xFE\x41", UTFType::UTF16LE, 2},
        {"mark alone, UTF-8", "\xEF\xBB\xBF", UTFType::UTF8, 3}, {"half a mark", "\xEF\xBB", UTFType::Unknown, 0},
        {"zero second", "a\0"s, UTFType::UTF16LE, 0}, {"zero first", "\0a"s, UTFType::UTF16BE, 0},
        {"two zeros", "\0\0"s, UTFType::Unknown, 0}, {"three bytes", "abc", UTFType::Unknown, 0},
        {"200 of ASCII", std::string(200, 'a'), UTFType::Unknown, 0}, {"201 of ASCII", ascii, UTFType::UTF8, 0},
        {"ASCII up to a zero", ascii + '\0' + "\xFF", UTFType::UTF8, 0},
        {"zeros only", std::string(300, '\0'), UTFType::UTF8, 0},
        {"a sequence at the end", filler + "0123456\xE2\x82\xAC end\xC3\xA4", UTFType::UTF8, 0},
        {"text without mark, little", UTF16LE(text.View()), UTFType::UTF16LE, 0},
        {"Latin 1", filler + "Gr\xFC\xDF"s + "e und mehr", UTFType::Unknown, 0}};
    const TempFolder folder;
    for (const auto& [what, bytes, type, position] : cases)
    {
        SCOPED_TRACE(what);
        Reader file(folder.Make(L"text", bytes));
        EXPECT_EQ(file.GetUTFType(), type);
        EXPECT_EQ(file.Tell(), position);
    }
}

// Texts that the library's own test must not detect as UTF-8. The system's tests reject them or come last.
TEST(UTFTypeOfFile, WhatIsNoUTF8)
{
    const std::string filler(250, 'x');
    // A continuation byte without a lead, overlong forms, sequences truncated by the end, characters above U+FFFF.
    const char* const bad[] = {"\x80", "\xC0\x80", "\xC1\xBF", "\xE0\x9F\xBF", "\xC3", "\xE2\x82", "\xC3x",
        "\xF0\x9F\x98\x80", "\xF8\x88\x80\x80\x80", "\xFE", "\xFF"};
    for (const char* sequence : bad)
    {
        const std::string text = filler + sequence;
        EXPECT_NE(GuessByContent(reinterpret_cast<const std::uint8_t*>(text.c_str()), text.size()), UTFType::UTF8)
            << testing::PrintToString(sequence);
    }
    const std::string good = filler + "\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF";
    EXPECT_EQ(GuessByContent(reinterpret_cast<const std::uint8_t*>(good.c_str()), good.size()), UTFType::UTF8);
}

TEST(UTFTypeOfFile, NotAtTheBeginning)
{
    const TempFolder folder;
    const DebugLines lines;
    Reader file(folder.Make(L"marked", "\xEF\xBB\xBF" + std::string(300, 'a')));
    EXPECT_EQ(file.GetUTFType(), UTFType::UTF8);
    EXPECT_EQ(lines.Count(), 0U);
    // The file is large enough for the test, but too few bytes are left after the position.
    EXPECT_EQ(file.GetUTFType(), UTFType::Unknown);
    EXPECT_STREQ(lines.Only().Text(), L"clsFile::GetUTFType(): file not at BOF!");

    Reader small(folder.Make(L"small", "\xEF\xBB\xBF" + std::string(100, 'a')));
    small.Seek(5);
    EXPECT_EQ(small.GetUTFType(), UTFType::Unknown);
    EXPECT_EQ(small.Tell(), 5);
}
