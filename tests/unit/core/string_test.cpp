#include "core/text/string.h"

#include "core/charset/char_string.h"
#include "core/debugger.h"
#include "support/debug_lines.h"
#include "support/run_in_threads.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <latch>
#include <random>
#include <string>
#include <tuple>

using namespace qx;
using qxtest::DebugLines;

static_assert(sizeof(String) == 40);
static_assert(std::is_nothrow_move_constructible_v<String> && std::is_nothrow_move_assignable_v<String>);

namespace
{

TEST(StringValueTest, TakesAPartOfAText)
{
    const std::tuple<const wchar_t*, std::size_t, std::size_t, const wchar_t*> cases[] = {{L"abcd", 5, 3, L""},
        {L"abcd", 4, 3, L""}, {L"abcdefghij", 5, 3, L"fgh"}, {L"abcdefghij", 8, 3, L"ij"},
        {L"abcdefghij", 3, String::kAll, L"defghij"}, {L"abcdefghij", 3, SIZE_MAX, L"defghij"},
        {L"abcdefghij", SIZE_MAX, 3, L""}, {nullptr, 0, 3, L""}};
    for (const auto& [text, start, count, expected] : cases)
    {
        EXPECT_STREQ(String(text, start, count).Text(), expected);
        String assigned(L"before");
        assigned.Assign(text, start, count);
        EXPECT_STREQ(assigned.Text(), expected);
        EXPECT_EQ(assigned.Length(), wcslen(expected));
    }
    const wchar_t raw[] = {L'a', L'b', L'c'}; // without a terminator
    EXPECT_STREQ(String(raw, 1, 2).Text(), L"bc");
}

TEST(StringValueTest, CapacityGrowsInStepsOfEightAndStays)
{
    EXPECT_EQ(String(L"").Capacity(), 0u);
    for (const auto& [length, capacity] : {std::pair<std::size_t, std::size_t>{1, 8}, {7, 8}, {8, 16}, {16, 24}})
    {
        String filled, appended;
        filled.Fill(L'x', length);
        EXPECT_EQ(filled.Capacity(), capacity) << length;
        for (std::size_t i = 0; i < length; ++i)
            appended.Append(L'x');
        EXPECT_EQ(appended.Capacity(), capacity) << length;
    }
    String s(L"0123456789");
    const wchar_t* text = s.Text();
    s.Empty();
    s = L"abc"; // fits, so nothing is reallocated and the capacity doesn't shrink
    EXPECT_EQ(s.Text(), text);
    EXPECT_EQ(s.Capacity(), 16u);
    for (const std::size_t size : {20u, 3u})
    {
        s.Reserve(size, true);
        EXPECT_EQ(s.Capacity(), 20u);
        EXPECT_STREQ(s.Text(), L"abc");
    }
    const String sharing(s);
    s.Reserve(10, false);
    EXPECT_EQ(s.Capacity(), 10u);
    EXPECT_STREQ(sharing.Text(), L"abc");
    EXPECT_THROW(s.Reserve(SIZE_MAX / 2), std::bad_alloc);
    EXPECT_EQ(s.Capacity(), 10u);
    String other(L"taken");
    s.Take(other);
    s.Take(s);
    EXPECT_STREQ(s.Text(), L"taken");
    EXPECT_TRUE(other.IsEmpty());
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
    std::fill_n(s.GetBuffer(16), 16, L'x'); // including the last character: the text ends at the capacity
    s.ReleaseBuffer(16);
    EXPECT_EQ(s.Length(), 15u);
    String none;
    none.ReleaseBuffer(3);
    EXPECT_TRUE(none.IsEmpty());
    EXPECT_STREQ(none.GetBuffer(0), L"");
}

TEST(StringValueTest, NumbersAndConcatenations)
{
    for (const int value : {0, 10, -10, 11, -11, 2147483647, -2147483647 - 1})
        EXPECT_STREQ(String::FromInt(value).Text(), String(String::kFormatted, L"%d", value).Text());
    EXPECT_STREQ(String::FromUnsigned(4294967295u).Text(), L"4294967295");
    EXPECT_TRUE(String::FromInt(10).SharesRecordWith(String::FromUnsigned(10))); // like all numbers up to ten

    String a(L"ab"), b(L"cd");
    a.SetCodePage(1251);
    b.SetCodePage(932);
    EXPECT_EQ(String(a, b).CodePage(), 1251u);
    EXPECT_TRUE(String(a, String()).SharesRecordWith(a));
    EXPECT_STREQ((L"<" + a + L"|" + b + L">").Text(), L"<ab|cd>");
}

// ---- Changes

// Each change is made on a private record and on a shared one, which must not change for its other user. An operation
// without effect leaves the record shared.
TEST(StringChangeTest, ChangesLeaveTheOtherUsersAlone)
{
    const std::tuple<const wchar_t*, void (*)(String&), const wchar_t*> cases[] = {
        {L"abcab", [](String& s) { s.Append(L'\0'); }, L"abcab"},
        {L"abcab", [](String& s) { s.Append(static_cast<const wchar_t*>(nullptr)); }, L"abcab"},
        {L"abc", [](String& s) { s.Append(s); }, L"abcabc"},
        {L"abc", [](String& s) { s.Append(s.Text() + 1); }, L"abcbc"},
        {L"abc", [](String& s) { s.Assign(s.Text() + 1); }, L"bc"}, {L"abc", [](String& s) { s = *&s; }, L"abc"},
        {L"abc", [](String& s) { s.Empty(); }, L""}, {L"abc", [](String& s) { s.Fill(L'z', 2); }, L"zz"},
        {L"abc", [](String& s) { s.Fill(L'\0', 3); }, L""},
        {L"", [](String& s) { s.AppendWithSeparator(L',', String(L"d")); }, L"d"},
        {L"abc", [](String& s) { s.AppendWithSeparator(L',', String(L"d")); }, L"abc,d"},
        {L"abc", [](String& s) { s.AppendWithSeparator(L',', String()); }, L"abc,"},
        {L"abc", [](String& s) { s.AppendWithSeparator(s, s); }, L"abcabcabc"},
        {L"  \t a ", [](String& s) { s.TrimLeft(); }, L"\t a "},
        {L" a \t ", [](String& s) { s.TrimRight(); }, L" a \t"},
        {L" a \t", [](String& s) { s.TrimRight(L'\t'); }, L" a "}, {L"   ", [](String& s) { s.TrimLeft(); }, L""},
        {L"   ", [](String& s) { s.TrimRight(); }, L""}, {L"abc", [](String& s) { s.TrimRight(); }, L"abc"},
        {L"abc", [](String& s) { s.Insert(2, s); }, L"ababcc"},
        {L"abc", [](String& s) { s.Insert(1, String()); }, L"abc"},
        {L"abc", [](String& s) { s.Delete(1, String::kAll); }, L"a"},
        {L"abc", [](String& s) { s.Delete(3, 1); }, L"abc"},
        {L"banana", [](String& s) { EXPECT_EQ(s.Replace(L'a', L'o'), 3); }, L"bonono"},
        {L"banana", [](String& s) { EXPECT_EQ(s.Replace(L'a', L'\0'), 3); }, L"bnn"},
        {L"abc", [](String& s) { s.Replace(String(L"x"), String(L"y")); }, L"abc"},
        {L"abc", [](String& s) { s.Replace(String(), String(L"y")); }, L"abc"},
        {L"abc", [](String& s) { s.Replace(s, String(L"x")); }, L"x"},
        {L"abc", [](String& s) { s.Replace(String(L"b"), s); }, L"aabcc"},
        {L"abbab", [](String& s) { EXPECT_EQ(s.Replace(String(L"ab"), String(L"xyz")), 2); }, L"xyzbxyz"},
        {L"aaaaa", [](String& s) { EXPECT_EQ(s.Replace(String(L"aa"), String(L"a")), 2); }, L"aaa"},
        {L"abc", [](String& s) { s.GetField(1, L'b', true); }, L"a"},
        {L"abc", [](String& s) { s.GetField(0, L'b', false); }, L"abc"},
        {L"abc", [](String& s) { static_cast<void>(s[3]); }, L"abc"},
        {L"abc", [](String& s) { s.GetBuffer(10)[0] = L'X', s.ReleaseBuffer(); }, L"Xbc"},
        {L"abc", [](String& s) { s.Format(L"<%s>", s.Text()); }, L"<abc>"},
        {L"abc", [](String& s) { s.MakeUpper(); }, L"ABC"}};
    for (const auto& [before, change, after] : cases)
    {
        SCOPED_TRACE(testing::PrintToString(before) + " to " + testing::PrintToString(after));
        String other(before), shared(other);
        change(shared);
        EXPECT_STREQ(shared.Text(), after);
        EXPECT_EQ(shared.Length(), wcslen(after));
        EXPECT_STREQ(other.Text(), before);
        EXPECT_EQ(shared.SharesRecordWith(other), String(before) == String(after));

        String exclusive(before);
        change(exclusive);
        EXPECT_STREQ(exclusive.Text(), after);
    }
}

// Random sequences of changes on two strings that sometimes share a record, compared with std::u16string.
TEST(StringChangeTest, MatchesAModelUnderRandomChanges)
{
    std::mt19937 random(11);
    String strings[2];
    std::u16string models[2];
    const auto text = [](const std::u16string& model)
    {
        return reinterpret_cast<const wchar_t*>(model.c_str());
    };
    for (int step = 0; step < 20000; ++step)
    {
        const std::size_t which = random() % 2;
        String& s = strings[which];
        std::u16string& model = models[which];
        std::u16string part(random() % 6, u'a');
        for (char16_t& c : part)
            c = static_cast<char16_t>(u'a' + random() % 3);
        const std::size_t pos = random() % (model.size() + 2), count = random() % 5;
        switch (random() % 6)
        {
        case 0:
            s.Append(text(part));
            model += part;
            break;
        case 1:
            s.Insert(pos, String(text(part)));
            if (pos <= model.size())
                model.insert(pos, part);
            break;
        case 2:
        case 3:
            s.Delete(pos, count);
            if (pos < model.size())
                model.erase(pos, count);
            break;
        case 4:
            strings[1 - which] = s;
            models[1 - which] = model;
            break;
        default:
            if (model.size() > 60)
            {
                s = s.Left(20);
                model.resize(20);
            }
            else if (!model.empty())
            {
                s[count % model.size()] = L'z';
                model[count % model.size()] = u'z';
            }
        }
        for (int i = 0; i < 2; ++i)
        {
            ASSERT_EQ(strings[i].Length(), models[i].size()) << step;
            ASSERT_STREQ(strings[i].Text(), text(models[i])) << step;
            ASSERT_TRUE(strings[i].Capacity() == 0 || strings[i].Capacity() > models[i].size());
        }
    }
}

// ---- 8-bit text

TEST(StringNarrowTest, TakesAPartOfTheBytesByTheCodePage)
{
    String s;
    s.SetCodePage(65001);
    s.Assign("\xE2\x82\xAC\xF0\x9F\x98\x80");
    EXPECT_STREQ(s.Text(), L"\u20AC\xD83D\xDE00");
    s.SetCodePage(1252);
    s.Assign("abcd\x80", 2);
    EXPECT_STREQ(s.Text(), L"cd\u20AC");
    s.Assign("abcdef", 2, 3);
    EXPECT_STREQ(s.Text(), L"cde");
    s.Assign("ab\0d", 0, 4); // texts with a given length may contain zeros
    EXPECT_EQ(s.View(), std::wstring_view(L"ab\0d", 4));
    s.Assign(static_cast<const char*>(nullptr));
    EXPECT_TRUE(s.IsEmpty());
    s.SetCodePage(0);
    s.Assign("\x80\xFF");
    EXPECT_STREQ(s.Text(), L"\x80\xFF");
    s.SetCodePage(12345); // no such page
    EXPECT_STREQ(s.NarrowText(), "");
    s.Assign("abc");
    EXPECT_TRUE(s.IsEmpty());
}

TEST(StringNarrowTest, CopyIsKeptUntilTheNextChange)
{
    String s(L"abc");
    s.SetCodePage(1252);
    const char* narrow = s.NarrowText();
    EXPECT_EQ(s.NarrowText(), narrow);
    EXPECT_NE(String(s).NarrowText(), narrow); // a copy doesn't have the 8-bit form yet
    // Assigning a string with the same record changes only the code page.
    String copy(s);
    s = copy;
    s = std::move(copy);
    EXPECT_EQ(s.NarrowText(), narrow);
    EXPECT_EQ(copy.Capacity(), 0u);
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
    EXPECT_TRUE(bytes.ToString(1252).IsEmpty());
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

    clsCHARString euro;
    euro.Append("\xE2\x82\xAC\0x", 5);
    EXPECT_STREQ(euro.ToString(65001).Text(), L"\u20AC");
    EXPECT_EQ(euro.ToString(0).View(), std::wstring_view(L"\xE2\x82\xAC\0x", 5));
}

// ---- Failures and threads

TEST(StringRecordTest, SecondReleaseIsReportedAndTheProgramGoesOn)
{
    static int tracedFrames = 0;
    DebugLines lines;
    ForgetDebuggerTest();
    const StackTraceHook former = SetStackTraceHook([](int frames) { tracedFrames = frames; });
    StringRecord* record = StringRecord::Create(8);
    record->usage = 0; // as after one release too many
    StringRecord::Release(record);
    SetStackTraceHook(former);
    EXPECT_STREQ(lines.Last().Text(), L"WRN: String buffer released twice (usage=-1)");
    EXPECT_EQ(tracedFrames, 50);
    record->usage = 1;
    StringRecord::Release(record);
}

TEST(StringValueTest, WriteOutOfBoundsIsReported)
{
    DebugLines lines;
    String s(L"abc");
    s[3] = L'X';
    s[-1] = L'X';
    EXPECT_STREQ(s.Text(), L"abc");
    EXPECT_EQ(std::as_const(s)[3], 0);
    {
        const String any, other;
    }
    EXPECT_EQ(lines.CountOf(L"WRN: detected write to String::operator[] with index out of bounds"), 2u);
}

TEST(StringValueTest, ThreadsShareARecord)
{
    String shared(L"shared by all");
    std::latch begin(4);
    qxtest::RunInThreads(4,
        [&begin, &shared = std::as_const(shared)](unsigned)
        {
            begin.arrive_and_wait();
            for (int i = 0; i < 500000; ++i)
            {
                String copy(shared);
                if (i % 100 == 0)
                    copy.Append(L'!');
            }
        });
    const wchar_t* const text = shared.Text();
    shared[0] = L'S';
    EXPECT_EQ(shared.Text(), text); // no longer shared, so it is changed in place
    EXPECT_STREQ(text, L"Shared by all");
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
    s.Delete(0, 1);
    static_cast<String&>(s) = String(L"x");
    EXPECT_EQ(s.changes, 3);
}

} // namespace
