#include "core/text/format_estimate.h"
#include "core/text/string.h"
#include "support/debug_lines.h"
#include "support/developer_run.h"
#include "support/filled.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <optional>
#include <tuple>

using namespace qx;
using namespace qxtest;

namespace
{

constexpr const wchar_t* kPrintfError = L"<printf format error>";

std::optional<std::size_t> EstimateOf(const wchar_t* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const auto estimate = EstimateFormat(format, arguments);
    va_end(arguments);
    return estimate;
}

TEST(FormatTest, EstimatesByTheWalk)
{
    EXPECT_EQ(EstimateOf(L"abc%%%d%#x%*d", 1, 1, 50, 1), 8u + 34 + 36 + 50);
    EXPECT_EQ(EstimateOf(L"%Fd%Ld%Nd%zd", 1, 1, 1, 1), 4 * 34u);
    EXPECT_EQ(EstimateOf(L"%150.20e%f%p", 1.0, 1.0, nullptr), 182u + 138 + 18);
    EXPECT_EQ(EstimateOf(L"%c%hc%lc%wC", 'a', 'a', 'a', 'a'), 6u);
    // For %S the formatter expects 8-bit text.
    EXPECT_EQ(EstimateOf(L"%s%ls%S%10.2s", L"", L"", "abcde", L"abc"), 1u + 2 + 5 + 2);
    EXPECT_EQ(EstimateOf(L"%.*s%.*s", 2, L"abc", -1, L"abc"), 2u + 3);
    EXPECT_EQ(EstimateOf(L"a%"), 2u);
    EXPECT_EQ(EstimateOf(L"%s", static_cast<wchar_t*>(nullptr)), std::nullopt);
    EXPECT_EQ(EstimateOf(L"%n", static_cast<int*>(nullptr)), std::nullopt);
    EXPECT_EQ(EstimateOf(L"%ls", reinterpret_cast<wchar_t*>(16)), std::nullopt);
    // After a conversion it doesn't support, the estimate reads the wrong arguments. It must not dereference a value
    // that is not a pointer.
    EXPECT_EQ(EstimateOf(L"%Ts %d %s", L"abc", 16, L"de"), 2u + 2 + 34 + 2 + 1);
    EXPECT_EQ(EstimateOf(L"%Ts%s", L"abc", L"defgh"), 2u + 3); // %s measures "abc", the argument of %Ts
    EXPECT_EQ(EstimateOf(L"%Id%s", static_cast<std::ptrdiff_t>(16), L"de"), 2u + 1);
    EXPECT_STREQ(String(String::kFormatted, L"%Ts %d %s", L"abc", 16, L"de").Text(), L"abc 16 de");
}

TEST(FormatTest, ResultReplacesTheText)
{
    const wchar_t raw[] = {L'a', L'b', L'c'}; // terminated only by the precision
    const std::pair<const wchar_t*, String> cases[] = {{L"abc", String(String::kFormatted, L"%.3s", raw)},
        {L"-5 wide narrow c 1f", String(String::kFormatted, L"%d %s %hs %c %x", -5, L"wide", "narrow", L'c', 31)},
        {L"123456789012 0x00000005 ff", String(String::kFormatted, L"%I64d %#010x %I64x", 123456789012LL, 5, 0xFFLL)},
        {L"[  ab][ab  ][002.50]", String(String::kFormatted, L"[%4s][%-*s][%06.2f]", L"ab", 4, L"ab", 2.5)},
        {L"wide w T", String(String::kFormatted, L"%ls %ws %Ts", L"wide", L"w", L"T")},
        {L"50%Ts x T", String(String::kFormatted, L"50%%Ts %Tc %-1Ts", L'x', L"T")},
        {L"", String(String::kFormatted, L"%s", L"")}, {L"", String(String::kFormatted, nullptr)},
        {kPrintfError, String(String::kFormatted, L"%s", static_cast<wchar_t*>(nullptr))},
        {kPrintfError, String(String::kFormatted, L"lost %d %n", 1, static_cast<int*>(nullptr))}};
    for (const auto& [expected, result] : cases)
        EXPECT_STREQ(result.Text(), expected);
}

TEST(FormatTest, ShortEstimatesCutAt99AndGiveZeroLongOnesGiveTheCountOrMinusOne)
{
    const String text = Filled(L'x', 150);
    String s;
    EXPECT_EQ(s.Format(L"%Ts", text.Text()), 0);
    EXPECT_EQ(s.Length(), 99u);
    EXPECT_EQ(s.Format(L"%s", Filled(L'x', 99).Text()), 0);
    EXPECT_EQ(s.Length(), 99u);
    EXPECT_EQ(s.Format(L"%s", Filled(L'x', 100).Text()), 100);
    EXPECT_EQ(s.Format(L"%s", text.Text()), 150);
    EXPECT_EQ(s, text);
    EXPECT_EQ(s.Format(L"%f", 1.5), 8);
    EXPECT_EQ(s.Format(L"%s%Ts", text.Text(), Filled(L'x', 200).Text()), -1); // the estimate is 152
    EXPECT_EQ(s.Length(), 152u);
}

TEST(FormatTest, PaddingIsBounded)
{
    String s;
    EXPECT_EQ(s.Format(L"%2000d|", 1), 2001);
    EXPECT_EQ(s.Length(), 2001u);
    EXPECT_EQ(s.Format(L"%*d", 2000000000, 1), -1);
    EXPECT_LT(s.Length(), 2000000u);
    EXPECT_EQ(EstimateOf(L"%99999999999999999999d", 1), std::size_t{1} << 20);
    EXPECT_EQ(EstimateOf(L"%.99999999999999999999s", L"abc"), 3u);
}

// ---- Messages

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

TEST(StringMessageTest, InsertsArgumentsByNumberOrGivesTheReason)
{
    EXPECT_STREQ(Inserted(L"%2 before %1", L"a", L"b").Text(), L"b before a");
    EXPECT_STREQ(Inserted(L"%1!d! of %2!d!, 100%%", 3, 7).Text(), L"3 of 7, 100%");
    DebugLines lines;
    const String reason = Inserted(nullptr);
    EXPECT_FALSE(reason.IsEmpty());
    EXPECT_STREQ(lines.Last().Text(), (L"String::VMessage(): FormatMessage() failed: " + reason).Text());
}

TEST(StringMessageTest, MissingResourceIsLoggedForDevelopersOnly)
{
    DebugLines lines;
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

// string_resources.rc has three languages; French exists only in its Belgian form.
TEST(StringMessageTest, ResourceIsSoughtInTheOrderOfLanguages)
{
    // The last rows: a block with an empty entry, a missing German block, German as the last attempt, and finally any
    // language.
    const std::tuple<WORD, int, const wchar_t*> cases[] = {{0x0007, 100, L"Deutsch 100, f\u00FCr"},
        {0x0009, 100, L"English 100"}, {0x080C, 100, L"Fran\u00E7ais 100"},
        {0x0009, 111, L"English 111, the last of its block"}, {0x0009, 60000, L""}, {0x0009, 110, L""},
        {0x0007, 112, L"English only"}, {0x0009, 176, L"German only"}, {0x0007, 240, L"French only"}};
    for (const auto& [language, id, expected] : cases)
        EXPECT_STREQ(String::LoadResourceString(nullptr, language, id).Text(), expected) << id;
    EXPECT_STREQ(String::Message(nullptr, 101, L"ten", L"one").Text(), L"one of ten");
}

TEST(StringCaseTest, MapsTextsOfAnyLengthByTheLinguisticRulesOrLeavesThem)
{
    String s(L"stra\u00DFe \u00E4\u00F1\u0451");
    s.MakeUpper();
    EXPECT_STREQ(s.Text(), L"STRA\u00DFE \u00C4\u00D1\u0401");
    for (const std::size_t length : {199u, 200u, 5000u})
    {
        s.Fill(L'a', length);
        s.LCMapString(LCMAP_UPPERCASE, 127); // uses the function for the invariant locale
        EXPECT_EQ(s, Filled(L'A', length)) << length;
    }

    constexpr unsigned kHiraganaAndKatakana = 0x00300000; // the system refuses both flags at once
    DebugLines lines;
    s = L"abc";
    s.LCMapString(kHiraganaAndKatakana, 0x400);
    EXPECT_STREQ(s.Text(), L"abc");
    EXPECT_EQ(lines.CountOf(L"ERR: String::LCMapString[Ex](0x400) failed: 0/4/3 : "), 1u);
    EXPECT_EQ(lines.CountOf(L"! (Even if SUCCEEDED is returned, the result is garbage)"), 1u);
}

} // namespace
