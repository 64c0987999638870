#include "core/string.h"

#include "support/debug_line_capture.h"
#include "support/developer_run.h"

#include <windows.h>

#include <gtest/gtest.h>

using namespace qx;
using qxtest::UserIs;

namespace
{

TEST(DeveloperRunTest, WantsExactlyThreeLettersAndIsCached)
{
    for (const auto& [user, expected] : {std::pair<const wchar_t*, bool>{L"QvX", true}, {L"qv", false},
             {L"qvxy", false}, {L" qvx", false}, {nullptr, false}, {L"qvxqvxqvxqvx", false}})
    {
        const UserIs run(user);
        EXPECT_EQ(UtilIsDeveloperRun(), expected);
    }
    const UserIs run(L"qvx");
    EXPECT_TRUE(UtilIsDeveloperRun());
    SetEnvironmentVariableW(L"user", L"other");
    EXPECT_TRUE(UtilIsDeveloperRun());
}

TEST(StringMessageTest, SystemErrorTextEndsWithTheCode)
{
    const String text = String::SystemErrorText(ERROR_FILE_NOT_FOUND, 0x400);
    EXPECT_STREQ(text.Right(11).Text(), L" (00000002)");
    EXPECT_EQ(text.View().find_first_of(L"\r\n"), std::wstring_view::npos);
    EXPECT_STREQ(String::SystemErrorText(0x2FFF1234, 0x400).Text(), L"(error code 0x2fff1234)");
}

String Inserted(const wchar_t* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    String text = String::VMessage(format, arguments);
    va_end(arguments);
    return text;
}

TEST(StringMessageTest, InsertsArgumentsByNumber)
{
    EXPECT_STREQ(Inserted(L"%2 before %1", L"a", L"b").Text(), L"b before a");
    EXPECT_STREQ(Inserted(L"%1!d! of %2!d!, 100%%", 3, 7).Text(), L"3 of 7, 100%");
    EXPECT_STREQ(Inserted(L"nothing").Text(), L"nothing");
}

TEST(StringMessageTest, FailedInsertionIsLoggedAndGivesTheReason)
{
    DebugLineCapture lines;
    const String text = Inserted(nullptr);
    EXPECT_FALSE(text.IsEmpty());
    EXPECT_STREQ(lines.Last().Text(), (L"String::VMessage(): FormatMessage() failed: " + text).Text());
}

TEST(StringMessageTest, MissingResourceIsLoggedForDevelopersOnly)
{
    DebugLineCapture lines;
    EXPECT_TRUE(String::LoadResourceString(GetModuleHandleW(nullptr), 0, 60000).IsEmpty());
    {
        const UserIs run(L"someone");
        EXPECT_TRUE(String::Message(GetModuleHandleW(nullptr), 60000).IsEmpty());
    }
    EXPECT_EQ(lines.Count(), 0u);
    const UserIs run(L"QVX");
    EXPECT_TRUE(String::Message(GetModuleHandleW(nullptr), 60000).IsEmpty());
    EXPECT_EQ(lines.CountOf(L"String::Message(): String ressource 60000 not found in "), 1u);
}

// string_resources.rc: three languages, of which French stands for its Belgian form only.
TEST(StringMessageTest, ResourceIsSoughtInTheOrderOfLanguages)
{
    const struct
    {
        WORD language;
        int id;
        const wchar_t* expected;
    } cases[] = {{0x0007, 100, L"Deutsch 100, f\u00FCr"}, {0x0009, 100, L"English 100"},
        {0x080C, 100, L"Fran\u00E7ais 100"}, {0x0009, 111, L"English 111, the last of its block"},
        {0x0009, 110, L""},             // a block with an empty entry
        {0x0007, 112, L"English only"}, // no German block
        {0x0009, 176, L"German only"},  // German is tried last
        {0x0007, 240, L"French only"},  // any language in the end
        {0x0009, 60000, L""}};
    for (const auto& c : cases)
        EXPECT_STREQ(String::LoadResourceString(nullptr, c.language, c.id).Text(), c.expected) << c.id;
    EXPECT_STREQ(String::Message(nullptr, 101, L"ten", L"one").Text(), L"one of ten");
}

TEST(StringCaseTest, MapsByTheLinguisticRules)
{
    String s(L"stra\u00DFe \u00E4\u00F1\u0451");
    s.MakeUpper();
    EXPECT_STREQ(s.Text(), L"STRA\u00DFE \u00C4\u00D1\u0401");
    s.MakeLower();
    EXPECT_STREQ(s.Text(), L"stra\u00DFe \u00E4\u00F1\u0451");
}

TEST(StringCaseTest, LongTextsAndTheInvariantLocale)
{
    for (const std::size_t length : {199u, 200u, 5000u})
    {
        String s;
        s.Fill(L'a', length);
        s.LCMapString(LCMAP_UPPERCASE, 127); // through the function for the invariant locale
        String expected;
        expected.Fill(L'A', length);
        EXPECT_EQ(s, expected) << length;
    }
}

// What the system refuses: both at once.
constexpr unsigned hiraganaAndKatakana = 0x00300000;

TEST(StringCaseTest, FailureIsLoggedAndLeavesTheText)
{
    DebugLineCapture lines;
    String s(L"abc");
    s.LCMapString(hiraganaAndKatakana, 0x400);
    EXPECT_STREQ(s.Text(), L"abc");
    EXPECT_EQ(lines.CountOf(L"ERR: String::LCMapString[Ex](0x400) failed: 0/4/3 : "), 1u);
    EXPECT_EQ(lines.CountOf(L"! (Even if SUCCEEDED is returned, the result is garbage)"), 1u);
}

} // namespace
