#include "core/pattern/regex.h"

#include "support/debug_lines.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <string_view>
#include <thread>
#include <tuple>

using namespace qx;
using qxtest::DebugLines;

namespace
{

constexpr std::uint32_t kCaseless = 0x8;
constexpr std::uint32_t kDotAll = 0x20;
constexpr std::uint32_t kExtended = 0x80;
constexpr std::uint32_t kMultiLine = 0x400;
constexpr std::uint32_t kUngreedy = 0x40000;
constexpr std::uint64_t kUnset = ~std::uint64_t{0};

String Joined(const WCValSList<String>& pieces)
{
    String joined;
    for (const String& piece : pieces)
        joined += L"[" + piece + L"]";
    return joined;
}

class Recorder : public IclsRegExGSubCB
{
public:
    String OnMatch(const clsRegExMatchList& matches) override
    {
        ++count;
        return String(String::kFormatted, L"<%s@%d>", matches[0].text.Text(), static_cast<int>(matches[0].offset));
    }
    int count = 0;
};

} // namespace

TEST(RegEx, GroupsUpToTheHighestThatTookPart)
{
    clsRegEx pattern(L"(a)|(b)", 0);
    clsRegExMatchList matches;
    ASSERT_TRUE(pattern.Match(String(L"xb"), &matches));
    ASSERT_EQ(matches.Count(), 3U);
    EXPECT_STREQ(matches[0].text.Text(), L"b");
    EXPECT_EQ(matches[0].offset, 1U);
    EXPECT_STREQ(matches[1].text.Text(), L"");
    EXPECT_EQ(matches[1].offset, kUnset);
    EXPECT_STREQ(matches[2].text.Text(), L"b");
    EXPECT_STREQ(matches[7].text.Text(), L"b"); // past the end: the last one

    ASSERT_TRUE(pattern.Match(L"a", &matches));
    EXPECT_EQ(matches.Count(), 2U);
    EXPECT_FALSE(pattern.Match(L"c", &matches));
    EXPECT_EQ(matches.Count(), 2U); // unchanged
    EXPECT_EQ(clsRegExMatchList()[3].offset, kUnset);
}

TEST(RegEx, FlagsReachTheEngineAndOthersAreIgnored)
{
    // The last text is the match, or null if there is none.
    const std::tuple<const wchar_t*, std::uint32_t, const wchar_t*, const wchar_t*> cases[] = {
        {L"ABC", kCaseless, L"xabc", L"abc"}, {L"ABC", 0, L"xabc", nullptr}, {L"a.b", kDotAll, L"a\nb", L"a\nb"},
        {L"a.b", 0, L"a\nb", nullptr}, {L"a b # note", kExtended, L"ab", L"ab"}, {L"^b", kMultiLine, L"a\nb", L"b"},
        {L"^b", 0, L"a\nb", nullptr}, {L"a+", kUngreedy, L"aaa", L"a"}, {L"b", 0x80000000, L"ab", nullptr},
        {L"a$", 0, L"a\n", L"a"}, {L"a$", 0x10, L"a\n", nullptr}, {L"^a", 0x1, L"a", nullptr},
        {L"a$", 0x2, L"a", nullptr}, {L"a*", 0x4, L"b", nullptr},
        {L"^.$", 0x00080000, L"\xD83D\xDE00", nullptr}, // not in UTF mode: two characters
        {L"\xDE00", 0, L"\xD83D\xDE00", L"\xDE00"}};
    for (const auto& [source, flags, subject, match] : cases)
    {
        SCOPED_TRACE(testing::PrintToString(source) + " on " + testing::PrintToString(subject));
        clsRegEx pattern(source, flags);
        clsRegExMatchList matches;
        ASSERT_EQ(pattern.Match(subject, &matches), match != nullptr);
        EXPECT_STREQ(match != nullptr ? matches[0].text.Text() : nullptr, match);
    }
}

TEST(RegEx, StringFormSearchesPastZeros)
{
    clsRegEx pattern(L"b", 0);
    const String subject(std::wstring_view(L"a\0b", 3));
    clsRegExMatchList matches;
    ASSERT_TRUE(pattern.Match(subject, &matches));
    EXPECT_EQ(matches[0].offset, 2U);
    EXPECT_FALSE(pattern.Match(subject.Text(), nullptr));
    EXPECT_FALSE(pattern.Match(static_cast<const wchar_t*>(nullptr), nullptr));

    EXPECT_EQ(pattern.GSub(subject, L"c").Length(), 3U);
}

TEST(RegEx, BadPatternMatchesNothingAndIsReportedEachTime)
{
    const DebugLines lines;
    clsRegEx pattern(L"a(b", 0);
    EXPECT_FALSE(pattern.Match(L"ab", nullptr));
    EXPECT_STREQ(lines.Only().Text(), L"Error in RegEx offset 3: 'missing closing parenthesis'");
    EXPECT_STREQ(pattern.ErrorText().Text(), L"missing closing parenthesis");
    EXPECT_STREQ(pattern.GSub(String(L"ab"), L"x").Text(), L"ab");
    EXPECT_TRUE(pattern.MatchAll(L"ab").IsEmpty());
    EXPECT_STREQ(Joined(pattern.Split(L"ab")).Text(), L"[ab]");
    EXPECT_EQ(lines.Count(), 4U);
}

TEST(RegEx, TemplateRules)
{
    const std::tuple<const wchar_t*, const wchar_t*, const wchar_t*, const wchar_t*> cases[] = {
        {L"(b)(c)", L"abcd", L"\\2\\1", L"acbd"}, {L"(b)(c)", L"abcd", L"<\\0>", L"a<bc>d"},
        {L"(b)(c)", L"abcd", L"\\\\1", L"a\\\\1d"}, {L"(b)(c)", L"abcd", L"\\\\\\1", L"a\\\\bd"},
        {L"(b)(c)", L"abcd", L"\\", L"a\\d"}, {L"(b)(c)", L"abcd", L"\\x\\12", L"a\\xb2d"},
        {L"(b)(c)", L"abcd", nullptr, L"ad"}, {L"(x)|(b)", L"ab", L"[\\1\\2]", L"a[b]"},
        {L"x*", L"abc", L"-", L"-"},   // an empty match at the start: the rest is dropped
        {L"x*", L"xabc", L"-", L"--"}, // also if another match precedes the empty one
        {L"^a", L"aaa", L"b", L"bbb"}, // each search starts with a new subject
        {L"(?<=a)b", L"abab", L"X", L"aXaX"},
        {L"a|(?<=a)b", L"ab", L"X", L"Xb"}, // look-behind doesn't see beyond the end of the previous match
        {L"b", L"", L"X", L""}, {L"", L"ab", L"X", L"X"}, {L"b", L"aaa", L"X", L"aaa"}, {L"b$", L"ab", L"", L"a"}};
    for (const auto& [source, subject, replacement, result] : cases)
        EXPECT_STREQ(clsRegEx(source, 0).GSub(String(subject), replacement).Text(), result)
            << testing::PrintToString(source) << " " << testing::PrintToString(replacement);
    const DebugLines lines;
    EXPECT_STREQ(clsRegEx(L"(a)|(b)", 0).GSub(String(L"b"), L"<\\5>").Text(), L"<>");
    EXPECT_STREQ(lines.Only().Text(), L"ERR: clsRegEx: Match(5) not found (index too large, found only 3 entries)");
}

TEST(RegEx, CallbackForms)
{
    clsRegEx pattern(L"[0-9]+", 0);
    Recorder recorder;
    // Offsets count from the end of the previous match.
    EXPECT_STREQ(pattern.GSub(String(L"a1bc22"), recorder).Text(), L"a<1@1>bc<22@2>");
    EXPECT_EQ(recorder.count, 2);

    // A callback that does nothing leaves the matched text unchanged.
    int calls = 0;
    const auto keep = [&](const clsRegExMatchList&, String&)
    {
        return ++calls < 100;
    };
    EXPECT_STREQ(pattern.GSub(String(L"a1bc22d"), keep).Text(), L"a1bc22d");
    EXPECT_EQ(calls, 2);
    const auto firstOnly = [](const clsRegExMatchList& matches, String& text)
    {
        text = matches[0].text + L"!";
        return false;
    };
    EXPECT_STREQ(pattern.GSub(String(L"a1bc22d"), firstOnly).Text(), L"a1!bc22d");
}

TEST(RegEx, CallbackMayUseTheObjectChangeTheSubjectAndThrow)
{
    clsRegEx pattern(L"([a-z])=([0-9])", 0);
    String subject(L"a=1;b=2;c=3");
    const String result = pattern.GSub(subject,
        [&](const clsRegExMatchList& matches, String& text)
        {
            subject = L"gone";
            clsRegExMatchList inner;
            EXPECT_TRUE(pattern.Match(L"zz=9", &inner));
            pattern.Free();
            text = matches[2].text + matches[1].text;
            return true;
        });
    EXPECT_STREQ(result.Text(), L"1a;2b;3c");

    EXPECT_THROW(pattern.GSub(String(L"a=1"), [](const clsRegExMatchList&, String&) -> bool { throw 1; }), int);
    bool matched = false; // the object must not remain locked
    std::thread([&] { matched = pattern.Match(L"a=1", nullptr); }).join();
    EXPECT_TRUE(matched);
}

TEST(RegEx, MatchAllAndSplit)
{
    const std::tuple<const wchar_t*, const wchar_t*, const wchar_t*, const wchar_t*> cases[] = {
        {L"(\\d)x", L"1x2x", L"[1][2]", L"[][][]"}, {L",", L",", L"[,]", L"[][]"}, {L",", L"", L"", L"[]"},
        {L",", L"abc", L"", L"[abc]"}, {L" *, *", L"a , b,c,", L"[ , ][,][,]", L"[a][b][c][]"},
        {L"x*", L"abc", L"[]", L"[]"}, {L"b*", L"bab", L"[b][]", L"[][]"}, // ends without a final piece
        {L"(a)|(b)", L"ab", L"[a][]", L"[][][]"}, {L"^a", L"aab", L"[a][a]", L"[][][b]"}};
    for (const auto& [source, subject, all, split] : cases)
    {
        SCOPED_TRACE(testing::PrintToString(source) + " on " + testing::PrintToString(subject));
        clsRegEx pattern(source, 0);
        EXPECT_STREQ(Joined(pattern.MatchAll(subject)).Text(), all);
        EXPECT_STREQ(Joined(pattern.Split(subject)).Text(), split);
    }
    EXPECT_STREQ(Joined(String(L"a1b22c").Split(String(L"[0-9]+"))).Text(), L"[a][b][c]");
}

TEST(RegEx, QuotedTextMatchesItself)
{
    const String all(L".|()[^{+$*?\\]}-#x");
    EXPECT_STREQ(clsRegEx::Quote(all).Text(), L"\\.\\|\\(\\)\\[\\^\\{\\+\\$\\*\\?\\\\]}-#x");
    clsRegEx pattern(L"^" + clsRegEx::Quote(all) + L"$", 0);
    EXPECT_TRUE(pattern.Match(all, nullptr));
    EXPECT_EQ(clsRegEx::Quote(String(std::wstring_view(L".\0.", 3))).Length(), 5U);
}

// If the cost of a match grew with the length of the remaining text, this would take hours.
TEST(RegEx, LoopsAreLinearInTheSubject)
{
    constexpr std::size_t kMatches = 500000;
    String subject;
    subject.Reserve(2 * kMatches + 1);
    for (std::size_t i = 0; i < kMatches; ++i)
        subject.Append(L"a,", 2);
    clsRegEx comma(L",", 0);
    EXPECT_EQ(comma.GSub(subject, L"--").Length(), 3 * kMatches);
    EXPECT_EQ(comma.MatchAll(subject).Count(), kMatches);
    EXPECT_EQ(comma.Split(subject).Count(), kMatches + 1);
}

TEST(RegEx, ThreadsShareAnObject)
{
    clsRegEx pattern(L"([a-z]+)([0-9]+)", 0);
    std::atomic<int> wrong = 0;
    const auto work = [&](const wchar_t* letters, const wchar_t* digits)
    {
        const String subject = String(L"--") + letters + digits;
        for (int i = 0; i < 2000; ++i)
        {
            clsRegExMatchList matches;
            if (!pattern.Match(subject, &matches) || matches[1].text != String(letters) ||
                matches[2].text != String(digits))
                ++wrong;
            if (i % 100 == 0)
                pattern.Free();
        }
    };
    {
        const std::jthread a(work, L"abc", L"123456"), b(work, L"x", L"9");
    }
    EXPECT_EQ(wrong, 0);
}
