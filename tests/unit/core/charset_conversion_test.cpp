#include "core/charset/charset_conversion.h"

#include "core/system_values.h"
#include "support/filled.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>

using namespace qx;

namespace
{

// A buffer that reveals writes past its end.
struct Destination
{
    explicit Destination(std::size_t size) : bytes(size + 8, '#') {}
    bool IsUntouchedFrom(std::size_t index) const { return bytes.find_first_not_of('#', index) == std::string::npos; }
    std::string bytes;
};

} // namespace

// The object has an internal buffer of 64 units for each form.
TEST(CharsetConversion, TextsAroundTheInlineSizeAndLongOnes)
{
    for (const std::size_t length : {0u, 63u, 64u, 1000u})
    {
        SCOPED_TRACE(length);
        const String wide = qxtest::Filled(L'x', length);
        const std::string narrow(length, 'x');
        EXPECT_EQ(clsCharsetConversionString(wide.Text()).GetNarrow(), narrow);
        EXPECT_STREQ(clsCharsetConversionString(narrow.c_str()).GetWide(), wide.Text());
    }
    std::string bytes;
    for (int i = 0; i < 63; ++i)
        bytes += "\xC3\xA4";
    clsCharsetConversionStringCP text(CP_UTF8, bytes.c_str());
    EXPECT_EQ(wcslen(text.GetWide()), 63U);
    EXPECT_EQ(clsCharsetConversionStringCP(CP_UTF8, text.GetWide()).GetNarrow(), bytes);
}

TEST(CharsetConversion, CodePagesAndNull)
{
    EXPECT_STREQ(clsCharsetConversionStringCP(1252, "\x80\xE4").GetWide(), L"\u20AC\u00E4");
    EXPECT_STREQ(clsCharsetConversionStringCP(932, L"\u30A2\u4E00").GetNarrow(), "\x83\x41\x88\xEA");
    constexpr auto kNone = clsCharsetConversionString::kNoCodePage;
    EXPECT_STREQ(clsCharsetConversionStringCP(kNone, "a\x80\xFF").GetWide(), L"a\u0080\u00FF");
    EXPECT_STREQ(clsCharsetConversionStringCP(kNone, L"abc").GetNarrow(), "");
    clsCharsetConversionString ansi(L"\u00E4"), wide(static_cast<const wchar_t*>(nullptr)),
        narrow(static_cast<const char*>(nullptr));
    EXPECT_STREQ(ansi.GetNarrow(), clsCharsetConversionStringCP(DefaultCodePage(), L"\u00E4").GetNarrow());
    clsCharsetConversionStringCP empty(CP_UTF8);
    for (clsCharsetConversionString* text : {&wide, &narrow, static_cast<clsCharsetConversionString*>(&empty)})
    {
        EXPECT_STREQ(text->GetWide(), L"");
        EXPECT_STREQ(text->GetNarrow(), "");
    }
}

TEST(CharsetConversion, SetNarrowDeliversFirstAndStartsAnewInTheSameCodePage)
{
    clsCharsetConversionStringCP line(CP_UTF8);
    line.SetNarrow(std::string(500, 'y').c_str());
    EXPECT_EQ(wcslen(line.GetWide()), 500U);
    line.SetNarrow("\xE2\x82\xAC");
    EXPECT_STREQ(line.GetWide(), L"\u20AC");
    line.SetNarrow(nullptr);
    EXPECT_STREQ(line.GetWide(), L"");

    Destination destination(10);
    destination.bytes[0] = 0;
    clsCharsetConversionString output(destination.bytes.data(), 10);
    wcscpy(output.WideBuffer(), L"given");
    output.SetNarrow("other");
    EXPECT_STREQ(destination.bytes.c_str(), "given");
    strcpy(destination.bytes.data(), "kept");
    output.SetNarrow("more");
    EXPECT_STREQ(destination.bytes.c_str(), "kept");
}

TEST(CharsetConversion, OutputFormDeliversCutAndTerminated)
{
    // Text longer than the buffer is truncated, even if it becomes longer only in the code page.
    for (const wchar_t* given : {L"1234", L"12345"})
    {
        Destination destination(5);
        strcpy(destination.bytes.data(), "old");
        {
            clsCharsetConversionString output(destination.bytes.data(), 5);
            EXPECT_STREQ(output.GetWide(), L"old");
            wcscpy(output.WideBuffer(), given);
        }
        EXPECT_STREQ(destination.bytes.c_str(), "1234");
        EXPECT_TRUE(destination.IsUntouchedFrom(5));
    }
    for (const std::uint32_t capacity : {1U, 2U, 63U, 64U, 65U, 66U, 1000U})
    {
        SCOPED_TRACE(capacity);
        Destination destination(capacity); // no terminator within the capacity
        {
            clsCharsetConversionString output(destination.bytes.data(), capacity);
            EXPECT_EQ(wcslen(output.GetWide()), capacity - 1);
            *std::fill_n(output.WideBuffer(), capacity - 1, L'x') = 0;
        }
        EXPECT_EQ(strlen(destination.bytes.c_str()), capacity - 1);
        EXPECT_TRUE(destination.IsUntouchedFrom(capacity));
    }
    Destination untouched(0);
    EXPECT_STREQ(clsCharsetConversionString(untouched.bytes.data(), 0).GetWide(), L"");
    EXPECT_TRUE(untouched.IsUntouchedFrom(0));
    EXPECT_STREQ(clsCharsetConversionString(static_cast<char*>(nullptr), 10).GetWide(), L"");
}

TEST(CharsetConversion, WideOutputForm)
{
    wchar_t destination[8] = L"ab\0####";
    {
        clsCharsetConversionString output(destination, 5);
        EXPECT_STREQ(output.GetNarrow(), "ab");
        strcpy(output.NarrowBuffer(), "12345");
    }
    EXPECT_STREQ(destination, L"1234");
    EXPECT_EQ(destination[5], L'#');
}
