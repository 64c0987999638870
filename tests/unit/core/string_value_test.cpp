#include "core/string.h"

#include "core/char_string.h"
#include "core/debugger.h"
#include "support/debug_line_capture.h"

#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

using namespace qx;

static_assert(sizeof(String) == 40);
static_assert(std::is_nothrow_move_constructible_v<String> && std::is_nothrow_move_assignable_v<String>);

namespace
{

TEST(StringValueTest, TakesAPartOfAText)
{
    const struct
    {
        const wchar_t* text;
        std::size_t start, count;
        const wchar_t* expected;
    } cases[] = {{L"abcd", 5, 3, L""}, {L"abcd", 4, 3, L""}, {L"abcdefghij", 5, 3, L"fgh"},
        {L"abcdefghij", 8, 3, L"ij"}, {L"abcdefghij", 3, String::all, L"defghij"},
        {L"abcdefghij", 3, SIZE_MAX, L"defghij"}, {L"abcdefghij", SIZE_MAX, 3, L""}, {nullptr, 0, 3, L""}};
    for (const auto& c : cases)
    {
        EXPECT_STREQ(String(c.text, c.start, c.count).Text(), c.expected);
        String assigned(L"before");
        assigned.Assign(c.text, c.start, c.count);
        EXPECT_STREQ(assigned.Text(), c.expected);
        EXPECT_EQ(assigned.Length(), wcslen(c.expected));
    }
    const wchar_t raw[] = {L'a', L'b', L'c'}; // without a terminator behind it
    EXPECT_STREQ(String(raw, 1, 2).Text(), L"bc");
}

TEST(StringValueTest, CapacityGrowsInStepsOfEightAndStays)
{
    EXPECT_EQ(String(L"").Capacity(), 0u);
    EXPECT_EQ(String(static_cast<const wchar_t*>(nullptr)).Capacity(), 0u);
    for (const auto& [length, capacity] : {std::pair<std::size_t, std::size_t>{1, 8}, {7, 8}, {8, 16}, {16, 24}})
    {
        String filled, appended;
        filled.Fill(L'x', length);
        EXPECT_EQ(filled.Capacity(), capacity) << length;
        for (std::size_t i = 0; i < length; ++i)
            appended.Append(L'x');
        EXPECT_EQ(appended.Capacity(), capacity) << length;
        EXPECT_EQ(appended, filled);
    }
    String s(L"0123456789");
    const wchar_t* text = s.Text();
    s.Empty();
    s = L"abc"; // fits, so nothing is reallocated and nothing shrinks
    EXPECT_EQ(s.Text(), text);
    EXPECT_EQ(s.Capacity(), 16u);
    const String sharing(s);
    s.Empty();
    EXPECT_EQ(s.Capacity(), 0u);
    EXPECT_STREQ(sharing.Text(), L"abc");
}

TEST(StringValueTest, ReserveMakesRoomAndNeverShrinks)
{
    String s;
    s.Reserve(5);
    EXPECT_EQ(s.Capacity(), 5u);
    s = L"abc";
    for (const std::size_t size : {20u, 3u})
    {
        s.Reserve(size, true);
        EXPECT_EQ(s.Capacity(), 20u);
        EXPECT_STREQ(s.Text(), L"abc");
    }
    const String sharing(s);
    s.Reserve(10, false);
    EXPECT_EQ(s.Capacity(), 10u);
    EXPECT_TRUE(s.IsEmpty());
    EXPECT_STREQ(sharing.Text(), L"abc");
    EXPECT_THROW(s.Reserve(SIZE_MAX / 2), std::bad_alloc);
    EXPECT_EQ(s.Capacity(), 10u);
}

TEST(StringValueTest, MovesAndTakes)
{
    String a(L"shared");
    String b(a);
    String moved(std::move(a));
    EXPECT_EQ(a.Capacity(), 0u);
    EXPECT_TRUE(moved.SharesRecordWith(b));
    b = L"other";
    b.Take(moved);
    EXPECT_TRUE(moved.IsEmpty());
    b.Take(b);
    EXPECT_STREQ(b.Text(), L"shared");
}

TEST(StringValueTest, BufferIsWrittenAndReleased)
{
    String s(L"abc");
    wchar_t* buffer = s.GetBuffer(16);
    EXPECT_STREQ(buffer, L"abc");
    EXPECT_EQ(buffer[15], 0);
    wcscpy(buffer, L"0123456789");
    s.ReleaseBuffer();
    EXPECT_EQ(s.Length(), 10u);
    std::fill_n(s.GetBuffer(16), 16, L'x'); // even the last one: the text ends with the capacity
    s.ReleaseBuffer(16);
    EXPECT_EQ(s.Length(), 15u);
    s.GetBuffer(1);
    s.ReleaseBuffer(2);
    EXPECT_STREQ(s.Text(), L"xx");
    String none;
    none.ReleaseBuffer(3);
    EXPECT_TRUE(none.IsEmpty());
    EXPECT_STREQ(none.GetBuffer(0), L"");
}

TEST(StringValueTest, NumbersShareTheSmallOnes)
{
    for (const int value : {0, 10, -10, 11, -11, 2147483647, -2147483647 - 1})
        EXPECT_STREQ(String::FromInt(value).Text(), String(String::formatted, L"%d", value).Text());
    EXPECT_STREQ(String::FromUnsigned(4294967295u).Text(), L"4294967295");
    EXPECT_TRUE(String::FromInt(-10).SharesRecordWith(String::FromInt(-10)));
    EXPECT_TRUE(String::FromInt(10).SharesRecordWith(String::FromUnsigned(10)));
    EXPECT_EQ(String::FromUnsigned(11).Capacity(), 32u);
}

TEST(StringValueTest, ConcatenationTakesTheFirstCodePage)
{
    String a(L"ab"), b(L"cd");
    a.SetCodePage(1251);
    b.SetCodePage(932);
    EXPECT_EQ(String(a, b).CodePage(), 1251u);
    EXPECT_EQ(String(a, L"x").CodePage(), 1251u);
    EXPECT_TRUE(String(a, String()).SharesRecordWith(a));
    EXPECT_STREQ((L"<" + a + L"|" + b + L">").Text(), L"<ab|cd>");
    EXPECT_EQ(String().CodePage(), GetACP());
}

// ---- 8-bit text

TEST(StringNarrowTest, ConvertsByTheCodePage)
{
    const struct
    {
        unsigned codePage;
        std::string bytes;
        const wchar_t* text;
    } cases[] = {{1252, "\x80 M\xFCller", L"\u20AC M\u00FCller"},
        {65001, "\xE2\x82\xAC\xF0\x9F\x98\x80", L"\u20AC\xD83D\xDE00"}, {932, "\x93\xFA", L"\u65E5"}};
    for (const auto& c : cases)
    {
        String s;
        s.SetCodePage(c.codePage);
        s.Assign(c.bytes.c_str());
        EXPECT_STREQ(s.Text(), c.text) << c.codePage;
        EXPECT_EQ(c.bytes, s.NarrowText());
    }
    String s;
    s.SetCodePage(0);
    s.Assign("\x80\xFF");
    EXPECT_STREQ(s.Text(), L"\x80\xFF");
}

TEST(StringNarrowTest, TakesAPartOfTheBytes)
{
    String s;
    s.SetCodePage(1252);
    s.Assign("abcdef", 2);
    EXPECT_STREQ(s.Text(), L"cdef");
    s.Assign("abcdef", 2, 3);
    EXPECT_STREQ(s.Text(), L"cde");
    s.Assign("ab\0d", 0, 4); // counted bytes may hold zeros
    EXPECT_EQ(s.Length(), 4u);
    EXPECT_EQ(s.CharAt(3), L'd');
    s.Assign(static_cast<const char*>(nullptr));
    EXPECT_TRUE(s.IsEmpty());
    s.SetCodePage(12345); // no such page
    s.Assign("abc");
    EXPECT_TRUE(s.IsEmpty());
    s = L"abc";
    EXPECT_STREQ(s.NarrowText(), "");
}

TEST(StringNarrowTest, CopyIsKeptUntilTheNextChange)
{
    String s(L"abc");
    s.SetCodePage(1252);
    const char* narrow = s.NarrowText();
    EXPECT_EQ(s.NarrowText(), narrow);
    const String copy(s); // has none of its own yet
    EXPECT_NE(copy.NarrowText(), narrow);

    // Assigning what has the same record changes only the code page.
    s = copy;
    EXPECT_EQ(s.NarrowText(), narrow);
    String moved(std::move(s));
    EXPECT_EQ(moved.NarrowText(), narrow);

    moved.Append(L'\u20AC');
    EXPECT_STREQ(moved.NarrowText(), "abc\x80");
    moved[0] = L'X';
    EXPECT_STREQ(moved.NarrowText(), "Xbc\x80");
    moved.SetCodePage(65001);
    EXPECT_STREQ(moved.NarrowText(), "Xbc\xE2\x82\xAC");
    moved.Assign(moved.NarrowText());
    EXPECT_STREQ(moved.Text(), L"Xbc\u20AC");
    EXPECT_STREQ(String().NarrowText(), "");
}

TEST(CharStringTest, GrowsInStepsOf256)
{
    clsCHARString bytes;
    EXPECT_STREQ(bytes.Text(), "");
    std::string expected;
    for (int i = 0; i < 600; ++i)
    {
        bytes.Append(static_cast<char>('a' + i % 26));
        expected += static_cast<char>('a' + i % 26);
        ASSERT_EQ(bytes.Capacity(), (bytes.Length() + 1 + 255) / 256 * 256) << i;
        ASSERT_EQ(bytes.Text(), expected);
    }
    clsCHARString copy(bytes);
    copy.Append(copy.Text(), copy.Length());
    EXPECT_EQ(copy.Text(), expected + expected);
    EXPECT_EQ(bytes.Text(), expected);
    copy.Reserve(10000);
    const char* reserved = copy.Text();
    while (copy.Length() < 10000)
        copy.Append('x');
    EXPECT_EQ(copy.Text(), reserved);
}

TEST(CharStringTest, ConvertsByCodePage)
{
    clsCHARString bytes;
    EXPECT_TRUE(bytes.ToString(1252).IsEmpty());
    bytes.Append("\xE2\x82\xAC\0x", 5);
    EXPECT_STREQ(bytes.ToString(65001).Text(), L"\u20AC");
    EXPECT_STREQ(bytes.ToString(0).Text(), L"\xE2\x82\xAC");
    EXPECT_EQ(bytes.ToString(0).Length(), 5u);
    EXPECT_EQ(bytes.ToString(0).CodePage(), GetACP());
}

// ---- Failures and threads

int tracedFrames = 0;

TEST(StringRecordTest, SecondReleaseIsReportedAndTheProgramGoesOn)
{
    DebugLineCapture lines;
    ForgetDebuggerTest();
    const StackTraceHook former = SetStackTraceHook([](int frames) { tracedFrames = frames; });
    StringRecord* record = StringRecord::Create(8);
    record->usage = 0; // as after a release that was one too many
    StringRecord::Release(record);
    SetStackTraceHook(former);
    EXPECT_STREQ(lines.Last().Text(), L"WRN: String buffer released twice (usage=-1)");
    EXPECT_EQ(tracedFrames, 50);
    record->usage = 1;
    StringRecord::Release(record);
}

TEST(StringValueTest, WriteOutOfBoundsIsReported)
{
    DebugLineCapture lines;
    String s(L"abc");
    {
        const String fine(L"x");
    }
    EXPECT_EQ(lines.Count(), 0u);
    s[3] = L'X';
    s[-1] = L'X';
    EXPECT_STREQ(s.Text(), L"abc");
    EXPECT_EQ(std::as_const(s)[3], 0);
    {
        const String any, other;
    }
    EXPECT_EQ(lines.CountOf(L"WRN: detected write to String::operator[] with index out of bounds"), 2u);
    s[3] = 0; // the guard isn't reset by itself
    const std::size_t count = lines.Count();
    {
        const String any;
    }
    EXPECT_EQ(lines.Count(), count);
}

TEST(StringValueTest, ThreadsShareARecord)
{
    const String shared(L"shared by all");
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back(
            [&shared, &wrong, t]
            {
                std::vector<String> copies;
                for (int i = 0; i < 20000; ++i)
                {
                    copies.push_back(shared);
                    if (i % 3 == 0)
                        copies.back().Append(static_cast<wchar_t>(L'0' + t));
                    if (copies.size() > 50)
                        copies.clear();
                    wrong += shared.Compare(L"shared by all") != 0;
                }
            });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(wrong, 0);
    String last(shared);
    EXPECT_TRUE(last.SharesRecordWith(shared));
}

class Watched : public String
{
public:
    using String::String;
    int changes = 0;

private:
    void OnChange() noexcept override { ++changes; }
};

TEST(StringValueTest, HookIsCalledBeforeChangesOnly)
{
    Watched s(L"abc");
    s.changes = 0;
    s.GetField(0, L'b', false);
    s.Append(L"");
    s.Replace(L'x', L'y');
    static_cast<void>(s.NarrowText());
    EXPECT_EQ(s.changes, 0);
    s.Append(L'd');
    EXPECT_EQ(s.changes, 1);
    s.Delete(0, 1);
    EXPECT_EQ(s.changes, 2);
    static_cast<String&>(s) = String(L"x");
    EXPECT_EQ(s.changes, 3);
}

} // namespace
