#include "core/string.h"

#include "core/char_string.h"
#include "core/debugger.h"
#include "support/debug_line_capture.h"

#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

using namespace qx;

static_assert(sizeof(String) == 40);
static_assert(std::is_nothrow_move_constructible_v<String> && std::is_nothrow_move_assignable_v<String>);

namespace
{

String SharedWith(String& other, const wchar_t* text)
{
    other = String(text);
    return other;
}

TEST(StringValueTest, TakesAPartOfAText)
{
    struct Case
    {
        const wchar_t* text;
        std::size_t start;
        std::size_t count;
        const wchar_t* expected;
    };
    const Case cases[] = {
        {L"abcd", 5, 3, L""},
        {L"abcd", 4, 3, L""},
        {L"abcdefghij", 5, 3, L"fgh"},
        {L"abcdefghij", 8, 3, L"ij"},
        {L"abcdefghij", 0, String::all, L"abcdefghij"},
        {L"abcdefghij", 3, String::all, L"defghij"},
        {L"abcdefghij", 3, SIZE_MAX, L"defghij"},
        {L"abcdefghij", SIZE_MAX, 3, L""},
        {L"abcd", 0, 0, L""},
        {L"", 0, 3, L""},
        {nullptr, 0, 3, L""},
    };
    for (const Case& c : cases)
    {
        EXPECT_STREQ(String(c.text, c.start, c.count).Text(), c.expected);
        String assigned(L"before");
        assigned.Assign(c.text, c.start, c.count);
        EXPECT_STREQ(assigned.Text(), c.expected);
        EXPECT_EQ(assigned.Length(), wcslen(c.expected));
    }
    // Characters without a terminator behind them.
    const wchar_t raw[] = {L'a', L'b', L'c'};
    EXPECT_STREQ(String(raw, 1, 2).Text(), L"bc");
}

TEST(StringValueTest, EmptyStringsHaveNoBufferUntilTheyHeldText)
{
    String s;
    EXPECT_EQ(s.Capacity(), 0u);
    EXPECT_STREQ(s.Text(), L"");
    EXPECT_EQ(String(L"").Capacity(), 0u);
    EXPECT_EQ(String(static_cast<const wchar_t*>(nullptr)).Capacity(), 0u);
    s = L"text";
    s.Empty();
    EXPECT_TRUE(s.IsEmpty());
    EXPECT_EQ(s.Capacity(), 8u);
    s = L"text";
    const String sharing(s);
    s.Empty();
    EXPECT_EQ(s.Capacity(), 0u);
    EXPECT_STREQ(sharing.Text(), L"text");
}

TEST(StringValueTest, CapacityGrowsInStepsOfEight)
{
    struct Case
    {
        std::size_t length;
        std::size_t capacity;
    };
    for (const Case& c : {Case{1, 8}, {7, 8}, {8, 16}, {15, 16}, {16, 24}})
    {
        String filled;
        filled.Fill(L'x', c.length);
        EXPECT_EQ(filled.Capacity(), c.capacity) << c.length;
        String appended;
        for (std::size_t i = 0; i < c.length; ++i)
            appended.Append(L'x');
        EXPECT_EQ(appended.Capacity(), c.capacity) << c.length;
        EXPECT_EQ(appended, filled);
    }
    String s(L"0123456789");
    const wchar_t* text = s.Text();
    s = L"abc"; // fits, so nothing is reallocated and nothing shrinks
    EXPECT_EQ(s.Text(), text);
    EXPECT_EQ(s.Capacity(), 16u);
}

TEST(StringValueTest, CopiesShareUntilOneChanges)
{
    String a(L"shared");
    String b(a);
    EXPECT_TRUE(a.SharesRecordWith(b));
    b.Append(L'!');
    EXPECT_FALSE(a.SharesRecordWith(b));
    EXPECT_STREQ(a.Text(), L"shared");
    EXPECT_STREQ(b.Text(), L"shared!");
    b = a;
    EXPECT_TRUE(a.SharesRecordWith(b));
    b[0] = L'S';
    EXPECT_STREQ(a.Text(), L"shared");
    EXPECT_STREQ(b.Text(), L"Shared");
    String moved(std::move(a));
    EXPECT_EQ(a.Capacity(), 0u);
    EXPECT_STREQ(moved.Text(), L"shared");
    b.Take(moved);
    EXPECT_STREQ(b.Text(), L"shared");
    EXPECT_TRUE(moved.IsEmpty());
    b.Take(b);
    EXPECT_STREQ(b.Text(), L"shared");
}

TEST(StringValueTest, WhatChangesNothingLeavesTheRecordShared)
{
    struct Case
    {
        void (*change)(String&);
        const char* name;
    };
    const Case cases[] = {
        {[](String& s) { s.Append(L'\0'); }, "append zero"},
        {[](String& s) { s.Append(static_cast<const wchar_t*>(nullptr)); }, "append null"},
        {[](String& s) { s.Append(String()); }, "append empty"},
        {[](String& s) { s.AppendWithSeparator(String(), String()); }, "append empty with empty separator"},
        {[](String& s) { s.TrimLeft(); }, "trim left"},
        {[](String& s) { s.TrimRight(); }, "trim right"},
        {[](String& s) { s.Insert(1, String()); }, "insert empty"},
        {[](String& s) { s.Insert(9, String(L"x")); }, "insert behind the end"},
        {[](String& s) { s.Delete(1, 0); }, "delete nothing"},
        {[](String& s) { s.Delete(5, 1); }, "delete behind the end"},
        {[](String& s) { s.Replace(L'x', L'y'); }, "replace character"},
        {[](String& s) { s.Replace(String(L"x"), String(L"y")); }, "replace text"},
        {[](String& s) { s.Replace(String(), String(L"y")); }, "replace empty"},
        {[](String& s) { s.GetField(0, L'b', false); }, "field"},
        {[](String& s) { static_cast<void>(s[5]); }, "guard"},
        {[](String& s) { s = *&s; }, "assign itself"},
    };
    for (const Case& c : cases)
    {
        String other;
        String s = SharedWith(other, L"abcab");
        c.change(s);
        EXPECT_TRUE(s.SharesRecordWith(other)) << c.name;
        EXPECT_STREQ(s.Text(), L"abcab") << c.name;
    }
}

TEST(StringValueTest, ChangesLeaveTheOtherUsersAlone)
{
    struct Case
    {
        const char* name;
        void (*change)(String&);
        const wchar_t* expected;
    };
    const Case cases[] = {
        {"assign", [](String& s) { s.Assign(L"x"); }, L"x"},
        {"fill", [](String& s) { s.Fill(L'z', 3); }, L"zzz"},
        {"empty", [](String& s) { s.Empty(); }, L""},
        {"append", [](String& s) { s.Append(L"de"); }, L"  abc  de"},
        {"append itself", [](String& s) { s.Append(s); }, L"  abc    abc  "},
        {"append its tail", [](String& s) { s.Append(s.Text() + 4); }, L"  abc  c  "},
        {"assign its tail", [](String& s) { s.Assign(s.Text() + 4); }, L"c  "},
        {"separator", [](String& s) { s.AppendWithSeparator(L',', String(L"d")); }, L"  abc  ,d"},
        {"itself as separator", [](String& s) { s.AppendWithSeparator(s, s); }, L"  abc    abc    abc  "},
        {"trim left", [](String& s) { s.TrimLeft(); }, L"abc  "},
        {"trim right", [](String& s) { s.TrimRight(); }, L"  abc"},
        {"insert", [](String& s) { s.Insert(3, String(L"XY")); }, L"  aXYbc  "},
        {"insert itself", [](String& s) { s.Insert(2, s); }, L"    abc  abc  "},
        {"insert at the end", [](String& s) { s.Insert(7, String(L"X")); }, L"  abc  X"},
        {"delete", [](String& s) { s.Delete(1, 2); }, L" bc  "},
        {"delete the rest", [](String& s) { s.Delete(5, String::all); }, L"  abc"},
        {"replace character", [](String& s) { s.Replace(L' ', L'_'); }, L"__abc__"},
        {"remove character", [](String& s) { s.Replace(L' ', L'\0'); }, L"abc"},
        {"replace by longer", [](String& s) { s.Replace(String(L" "), String(L"-+")); }, L"-+-+abc-+-+"},
        {"replace by shorter", [](String& s) { s.Replace(String(L"abc"), String(L"x")); }, L"  x  "},
        {"replace itself", [](String& s) { s.Replace(s, String(L"x")); }, L"x"},
        {"replace by itself", [](String& s) { s.Replace(String(L"b"), s); }, L"  a  abc  c  "},
        {"remove field", [](String& s) { s.GetField(1, L'b', true); }, L"  a"},
        {"write", [](String& s) { s[2] = L'X'; }, L"  Xbc  "},
        {"buffer",
            [](String& s)
            {
                s.GetBuffer(10)[0] = L'X';
                s.ReleaseBuffer();
            },
            L"X abc  "},
        {"format itself", [](String& s) { s.Format(L"<%s>", s.Text()); }, L"<  abc  >"},
        {"upper", [](String& s) { s.MakeUpper(); }, L"  ABC  "},
    };
    for (const Case& c : cases)
    {
        String other;
        String shared = SharedWith(other, L"  abc  ");
        c.change(shared);
        EXPECT_STREQ(shared.Text(), c.expected) << c.name;
        EXPECT_EQ(shared.Length(), wcslen(c.expected)) << c.name;
        EXPECT_STREQ(other.Text(), L"  abc  ") << c.name;

        String exclusive(L"  abc  ");
        c.change(exclusive);
        EXPECT_STREQ(exclusive.Text(), c.expected) << c.name;
    }
}

TEST(StringValueTest, ReserveMakesRoomAndNeverShrinks)
{
    String s;
    s.Reserve(0);
    EXPECT_EQ(s.Capacity(), 0u);
    s.Reserve(5);
    EXPECT_EQ(s.Capacity(), 5u);
    s = L"abc";
    s.Reserve(20, true);
    EXPECT_EQ(s.Capacity(), 20u);
    EXPECT_STREQ(s.Text(), L"abc");
    s.Reserve(3, true);
    EXPECT_EQ(s.Capacity(), 20u);
    const String sharing(s);
    s.Reserve(10, false);
    EXPECT_EQ(s.Capacity(), 10u);
    EXPECT_TRUE(s.IsEmpty());
    EXPECT_STREQ(sharing.Text(), L"abc");
    s = L"abc";
    s.Reserve(30, false);
    EXPECT_STREQ(s.Text(), L"");
    EXPECT_THROW(s.Reserve(SIZE_MAX / 2), std::bad_alloc);
    EXPECT_EQ(s.Capacity(), 30u);
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
    s.GetBuffer(1);
    s.ReleaseBuffer(0);
    EXPECT_TRUE(s.IsEmpty());
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
    EXPECT_FALSE(String::FromInt(11).SharesRecordWith(String::FromInt(11)));
    EXPECT_EQ(String::FromUnsigned(11).Capacity(), 32u);
}

TEST(StringValueTest, ConcatenationTakesTheFirstCodePage)
{
    String a(L"ab");
    a.SetCodePage(1251);
    String b(L"cd");
    b.SetCodePage(932);
    EXPECT_STREQ(String(a, b).Text(), L"abcd");
    EXPECT_EQ(String(a, b).CodePage(), 1251u);
    EXPECT_EQ(String(a, L"x").CodePage(), 1251u);
    EXPECT_TRUE(String(a, String()).SharesRecordWith(a));
    EXPECT_STREQ((L"<" + a + L"|" + b + L">").Text(), L"<ab|cd>");
    EXPECT_EQ(String(a).CodePage(), 1251u);
    EXPECT_EQ(String().CodePage(), GetACP());
}

// ---- 8-bit text

TEST(StringNarrowTest, ConvertsByTheCodePage)
{
    struct Case
    {
        unsigned codePage;
        std::string bytes;
        const wchar_t* text;
    };
    const Case cases[] = {
        {1252, "\x80 M\xFCller", L"\u20AC M\u00FCller"},
        {1251, "\xCF\xF0", L"\u041F\u0440"},
        {65001, "\xE2\x82\xAC\xF0\x9F\x98\x80", L"\u20AC\xD83D\xDE00"},
        {932, "\x93\xFA", L"\u65E5"},
    };
    for (const Case& c : cases)
    {
        String s;
        s.SetCodePage(c.codePage);
        s.Assign(c.bytes.c_str());
        EXPECT_STREQ(s.Text(), c.text) << c.codePage;
        EXPECT_EQ(s.CodePage(), c.codePage);
        EXPECT_EQ(c.bytes, s.NarrowText());
        EXPECT_EQ(c.bytes, static_cast<const char*>(s));
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
    s.Assign("");
    EXPECT_TRUE(s.IsEmpty());
    s = L"0123456789";
    const wchar_t* before = s.Text();
    s.Assign("abc");
    EXPECT_EQ(s.Text(), before); // the capacity sufficed
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
    EXPECT_EQ(bytes.Capacity(), 0u);
    EXPECT_STREQ(bytes.Text(), "");
    std::string expected;
    for (int i = 0; i < 600; ++i)
    {
        bytes.Append(static_cast<char>('a' + i % 26));
        expected += static_cast<char>('a' + i % 26);
        const std::size_t needed = bytes.Length() + 1;
        ASSERT_EQ(bytes.Capacity(), (needed + 255) / 256 * 256) << i;
        ASSERT_EQ(bytes.Text(), expected);
    }
    clsCHARString atOnce;
    atOnce.Append(expected.data(), 255);
    EXPECT_EQ(atOnce.Capacity(), 256u);
    atOnce.Append(expected.data() + 255, 345);
    EXPECT_EQ(atOnce.Text(), expected);
    atOnce.Append(atOnce.Text(), atOnce.Length());
    EXPECT_EQ(atOnce.Text(), expected + expected);
    clsCHARString copy(atOnce);
    copy.Append('!');
    EXPECT_EQ(atOnce.Length(), 1200u);
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
        const String any;
        const String other;
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
