#include <qxut23/strings.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <tuple>

namespace
{

// A buffer that reveals writes past the end of a text.
struct Buffer
{
    explicit Buffer(const QXWCHAR* text)
    {
        std::fill(std::begin(content), std::end(content), L'#');
        UtilStrcpy(content, text);
    }
    QXWCHAR content[40];
};

TEST(StringExportsTest, NullTextsAreEmptyAndNullTargetsAreLeft)
{
    EXPECT_EQ(UtilStrlen(nullptr), 0u);
    EXPECT_EQ(UtilSafeStrlen("any context", nullptr), 0u);
    EXPECT_EQ(UtilStrcpy(nullptr, L"a"), nullptr);
    EXPECT_EQ(UtilStrchr(nullptr, L'a'), nullptr);
    EXPECT_EQ(UtilStrrchr(nullptr, L'a'), nullptr);
    EXPECT_EQ(UtilStrstr(nullptr, L"a"), nullptr);
    EXPECT_EQ(UtilAtrim(nullptr), nullptr);
    EXPECT_EQ(UtilStuff(nullptr, 1, 1, L"X"), nullptr);
    EXPECT_EQ(UtilSubstr(nullptr, 1, 1), nullptr);
    EXPECT_LT(UtilSafeSprintf(nullptr, 8, L"%d", 1), 0);
    char bytes[] = "abcd";
    EXPECT_EQ(UtilMemset(bytes, 0x158, 1), bytes); // only the low byte is used
    EXPECT_EQ(UtilMemcpy(bytes + 1, bytes + 3, 1), bytes + 1);
    EXPECT_EQ(UtilMemcpy(bytes, nullptr, 0), bytes);
    EXPECT_STREQ(bytes, "Xdcd");
    EXPECT_EQ(UtilMemset(nullptr, 1, 0), nullptr);
    EXPECT_EQ(UtilIsRPtr(nullptr), 1); // all pointers are accepted
    EXPECT_EQ(UtilIsRPtr(reinterpret_cast<void*>(3)), 1);
    EXPECT_EQ(UtilIsString(nullptr), 1);
    EXPECT_EQ(UtilIsWPtr(nullptr), 1);
}

TEST(StringExportsTest, CopiesReturnTheTarget)
{
    Buffer buffer(L"");
    EXPECT_EQ(UtilStrcpy(buffer.content, L"ab"), buffer.content);
    EXPECT_EQ(UtilStrcat(buffer.content, L"cd"), buffer.content);
    EXPECT_STREQ(buffer.content, L"abcd");
    EXPECT_EQ(buffer.content[5], L'#');
    UtilStrcat(buffer.content, nullptr);
    EXPECT_STREQ(buffer.content, L"abcd");
    UtilStrcat(buffer.content, buffer.content + 2); // overlapping
    EXPECT_STREQ(buffer.content, L"abcdcd");
    UtilStrcpy(buffer.content, nullptr);
    EXPECT_STREQ(buffer.content, L"");
    // A bounded copy always terminates.
    for (const auto& [size, expected] :
        {std::pair<std::size_t, const QXWCHAR*>{0, L"old"}, {1, L""}, {6, L"abcde"}, {7, L"abcdef"}, {32, L"abcdef"}})
    {
        Buffer bounded(L"old");
        EXPECT_EQ(UtilStrncpy(bounded.content, L"abcdef", size), bounded.content);
        EXPECT_STREQ(bounded.content, expected) << size;
        EXPECT_EQ(bounded.content[std::max<std::size_t>(UtilStrlen(expected) + 1, 4)], L'#') << size;
    }
}

TEST(StringExportsTest, ComparesByCodeUnitAndFoldsOnlyAToZ)
{
    const std::tuple<const QXWCHAR*, const QXWCHAR*, int, int> cases[] = {{L"a", L"a", 0, 0}, {L"a", L"B", 1, -1},
        {L"ABC", L"abd", -1, -1}, {L"Z", L"[", -1, 1},           // compared in lower case
        {L"\u00E4", L"\u00C4", 1, 1}, {L"a", L"\uFF41", -1, -1}, // code units are unsigned
        {L"ab", L"abc", -1, -1}, {nullptr, L"", 0, 0}, {nullptr, L"a", -1, -1}, {L"a", nullptr, 1, 1}};
    for (const auto& [a, b, ordinal, withoutCase] : cases)
    {
        SCOPED_TRACE(testing::PrintToString(a) + " and " + testing::PrintToString(b));
        EXPECT_EQ(UtilStrcmp(a, b), ordinal);
        EXPECT_EQ(UtilStrcmp(b, a), -ordinal);
        EXPECT_EQ(std::clamp(UtilStrncmp(a, b, 5), -1, 1), ordinal);
        EXPECT_EQ(std::clamp(UtilStricmp(a, b), -1, 1), withoutCase);
        EXPECT_EQ(std::clamp(UtilStrnicmp(a, b, 5), -1, 1), withoutCase);
    }
    EXPECT_EQ(UtilStrncmp(L"abc", L"abd", 2), 0);
    EXPECT_EQ(UtilStrnicmp(L"abC", L"ABd", 2), 0);
    EXPECT_EQ(UtilStrncmp(L"a", L"b", 0), 0);
}

TEST(StringExportsTest, Searches)
{
    const QXWCHAR* text = L"abcabc";
    EXPECT_EQ(UtilStrchr(text, L'b'), text + 1);
    EXPECT_EQ(UtilStrrchr(text, L'b'), text + 4);
    EXPECT_EQ(UtilStrchr(text, 0), text + 6);
    EXPECT_EQ(UtilStrchr(text, L'x'), nullptr);
    EXPECT_EQ(UtilStrstr(text, L"ca"), text + 2);
    EXPECT_EQ(UtilStrstr(text, L""), text);
    EXPECT_EQ(UtilStrstr(text + 6, L""), text + 6);
    EXPECT_EQ(UtilStrstr(text, L"abcd"), nullptr);
}

TEST(StringExportsTest, TrimsBlanksOnly)
{
    const std::tuple<const QXWCHAR*, const QXWCHAR*, const QXWCHAR*, const QXWCHAR*> cases[] = {
        {L"  a b  ", L"a b  ", L"  a b", L"a b"}, {L"\t a \t", L"\t a \t", L"\t a \t", L"\t a \t"},
        {L"   ", L"", L"", L""}, {L"", L"", L"", L""}};
    for (const auto& [text, leftTrimmed, rightTrimmed, trimmed] : cases)
    {
        Buffer left(text), right(text), both(text);
        EXPECT_EQ(UtilLtrim(left.content), left.content);
        EXPECT_STREQ(left.content, leftTrimmed);
        EXPECT_STREQ(UtilRtrim(right.content), rightTrimmed);
        EXPECT_STREQ(UtilAtrim(both.content), trimmed);
    }
}

TEST(StringExportsTest, StuffReplacesAPart)
{
    const std::tuple<std::int32_t, std::int32_t, const QXWCHAR*, const QXWCHAR*> cases[] = {{1, 2, nullptr, L"cdef"},
        {3, 2, L"", L"abef"}, {3, 2, L"XYZ", L"abXYZef"}, {3, 2, L"X", L"abXef"}, {1, 0, L"X", L"Xabcdef"},
        {6, 99, L"X", L"abcdeX"}, {7, 5, L"XY", L"abcdefXY"}, // directly after the text
        {7, 5, nullptr, L"abcdef"}, {8, 0, L"X", L"abcdef"}, {0, 1, L"X", L"abcdef"}, {-3, 1, L"X", L"abcdef"},
        {2, -1, L"X", L"aXbcdef"}, {1, 0x7FFFFFFF, nullptr, L""}};
    for (const auto& [pos, count, insert, expected] : cases)
    {
        Buffer buffer(L"abcdef");
        EXPECT_EQ(UtilStuff(buffer.content, pos, count, insert), buffer.content);
        EXPECT_STREQ(buffer.content, expected) << pos << ", " << count;
        EXPECT_EQ(buffer.content[std::max<std::size_t>(UtilStrlen(expected) + 1, 7)], L'#') << pos;
    }
}

TEST(StringExportsTest, SubstrKeepsAPart)
{
    const std::tuple<std::int32_t, std::int32_t, const QXWCHAR*> cases[] = {{2, 3, L"bcd"}, {2, -1, L"abcdef"},
        {99, -1, L"abcdef"}, {0, -1, L"abcdef"}, {2, 0, L""}, {2, -2, L""}, {1, 99, L"abcdef"}, {6, 2, L"f"},
        {7, 2, L""}, {0, 2, L""}, {-1, 5, L"f"}, {-6, 2, L"ab"}, {-7, 2, L""}, {INT32_MIN, 2, L""}};
    for (const auto& [pos, count, expected] : cases)
    {
        Buffer buffer(L"abcdef");
        EXPECT_EQ(UtilSubstr(buffer.content, pos, count), buffer.content);
        EXPECT_STREQ(buffer.content, expected) << pos << ", " << count;
    }
}

TEST(StringExportsTest, SafeSprintfCutsAndTerminates)
{
    const std::tuple<std::size_t, int, const QXWCHAR*> cases[] = {
        {32, 8, L"wide n 7"}, {9, 8, L"wide n 7"}, {8, -1, L"wide n "}, {1, -1, L""}, {0, -1, L"old"}};
    for (const auto& [size, length, expected] : cases)
    {
        Buffer buffer(L"old");
        const int result = UtilSafeSprintf(buffer.content, size, L"%s %hs %I64d", L"wide", "n", 7LL);
        EXPECT_EQ(std::max(result, -1), length) << size;
        EXPECT_STREQ(buffer.content, expected) << size;
        EXPECT_EQ(buffer.content[std::max<std::size_t>(size, 4)], L'#');
    }
    Buffer buffer(L"old");
    EXPECT_LT(UtilSafeSprintf(buffer.content, 8, nullptr), 0);
}

// An untrusted format must not be able to write to memory.
TEST(StringExportsTest, SafeSprintfWritesNoCounts)
{
    const QXWCHAR* formats[] = {L"[%n%s %d]", L"[%hn%s %d]", L"[%ln%s %d]", L"[%lln%s %d]", L"[%I64n%s %d]",
        L"[%In%s %d]", L"[%-5n%s %d]", L"[%.3n%s %d]", L"[%wn%s %d]", L"[%hhn%s %d]", L"[%Fn%s %d]", L"[%Nn%s %d]",
        L"[%Ln%s %d]", L"[%jn%s %d]", L"[%tn%s %d]", L"[%zn%s %d]", L"[%I32n%s %d]", L"[%-05.3Fhn%s %d]",
        L"[%hFn%s %d]", L"[%NLn%s %d]"};
    for (const QXWCHAR* format : formats)
    {
        long long count = 0x5555555555555555;
        Buffer buffer(L"");
        EXPECT_EQ(UtilSafeSprintf(buffer.content, 32, format, &count, L"wide", 7), 8);
        EXPECT_STREQ(buffer.content, L"[wide 7]");
        EXPECT_EQ(count, 0x5555555555555555);
    }
    long long count = -1;
    Buffer buffer(L"");
    EXPECT_EQ(UtilSafeSprintf(buffer.content, 32, L"%%n%*.*n%Ts%n%d", 9, 8, &count, L"x", &count, 3), 4);
    EXPECT_STREQ(buffer.content, L"%nx3");
    EXPECT_EQ(count, -1);
}

} // namespace
