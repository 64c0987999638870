#include "core/string.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <string_view>

using namespace qx;

namespace
{

void Write(String& s)
{
    s.GetBuffer(10)[0] = L'X';
    s.ReleaseBuffer();
}

// Of a record of its own as of a shared one, which its other user keeps as it was. What changes nothing leaves it
// shared.
TEST(StringChangeTest, ChangesLeaveTheOtherUsersAlone)
{
    const struct
    {
        const wchar_t* before;
        void (*change)(String&);
        const wchar_t* after;
    } cases[] = {
        {L"abcab", [](String& s) { s.Append(L'\0'); }, L"abcab"},
        {L"abcab", [](String& s) { s.Append(static_cast<const wchar_t*>(nullptr)); }, L"abcab"},
        {L"abcab", [](String& s) { s.Append(String()); }, L"abcab"},
        {L"abc", [](String& s) { s.Append(s); }, L"abcabc"},
        {L"abc", [](String& s) { s.Append(s.Text() + 1); }, L"abcbc"},
        {L"abc", [](String& s) { s.Assign(s.Text() + 1); }, L"bc"},
        {L"abc", [](String& s) { s = *&s; }, L"abc"},
        {L"abc", [](String& s) { s.Empty(); }, L""},
        {L"abc", [](String& s) { s.Fill(L'z', 2); }, L"zz"},
        {L"abc", [](String& s) { s.Fill(L'\0', 3); }, L""},
        {L"", [](String& s) { s.AppendWithSeparator(L',', String(L"d")); }, L"d"},
        {L"abc", [](String& s) { s.AppendWithSeparator(L',', String(L"d")); }, L"abc,d"},
        {L"abc", [](String& s) { s.AppendWithSeparator(L',', String()); }, L"abc,"},
        {L"abc", [](String& s) { s.AppendWithSeparator(s, s); }, L"abcabcabc"},
        {L"abc", [](String& s) { s.AppendWithSeparator(String(), String()); }, L"abc"},
        {L"  \t a ", [](String& s) { s.TrimLeft(); }, L"\t a "},
        {L" a \t ", [](String& s) { s.TrimRight(); }, L" a \t"},
        {L" a \t", [](String& s) { s.TrimRight(L'\t'); }, L" a "},
        {L"   ", [](String& s) { s.TrimLeft(); }, L""},
        {L"   ", [](String& s) { s.TrimRight(); }, L""},
        {L"abc", [](String& s) { s.TrimLeft(); }, L"abc"},
        {L"abc", [](String& s) { s.TrimRight(); }, L"abc"},
        {L"abc", [](String& s) { s.Insert(2, s); }, L"ababcc"},
        {L"abc", [](String& s) { s.Insert(1, String()); }, L"abc"},
        {L"abc", [](String& s) { s.Insert(9, String(L"x")); }, L"abc"},
        {L"abc", [](String& s) { s.Delete(1, String::all); }, L"a"},
        {L"abc", [](String& s) { s.Delete(1, 0); }, L"abc"},
        {L"abc", [](String& s) { s.Delete(3, 1); }, L"abc"},
        {L"banana", [](String& s) { EXPECT_EQ(s.Replace(L'a', L'o'), 3); }, L"bonono"},
        {L"banana", [](String& s) { EXPECT_EQ(s.Replace(L'a', L'\0'), 3); }, L"bnn"},
        {L"banana", [](String& s) { EXPECT_EQ(s.Replace(L'x', L'y'), 0); }, L"banana"},
        {L"abc", [](String& s) { s.Replace(String(L"x"), String(L"y")); }, L"abc"},
        {L"abc", [](String& s) { s.Replace(String(), String(L"y")); }, L"abc"},
        {L"abc", [](String& s) { s.Replace(s, String(L"x")); }, L"x"},
        {L"abc", [](String& s) { s.Replace(String(L"b"), s); }, L"aabcc"},
        {L"abc", [](String& s) { s.GetField(1, L'b', true); }, L"a"},
        {L"abc", [](String& s) { s.GetField(0, L'b', false); }, L"abc"},
        {L"abc", [](String& s) { static_cast<void>(s[3]); }, L"abc"},
        {L"abc", Write, L"Xbc"},
        {L"abc", [](String& s) { s.Format(L"<%s>", s.Text()); }, L"<abc>"},
        {L"abc", [](String& s) { s.MakeUpper(); }, L"ABC"},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(&c - cases);
        String other(c.before);
        String shared(other);
        c.change(shared);
        EXPECT_STREQ(shared.Text(), c.after);
        EXPECT_EQ(shared.Length(), wcslen(c.after));
        EXPECT_STREQ(other.Text(), c.before);
        EXPECT_EQ(shared.SharesRecordWith(other), String(c.before) == String(c.after));

        String exclusive(c.before);
        c.change(exclusive);
        EXPECT_STREQ(exclusive.Text(), c.after);
    }
}

// Random sequences of changes on two strings that now and then share, against std::u16string.
TEST(StringChangeTest, MatchesAModelUnderRandomChanges)
{
    std::mt19937 random(11);
    const auto number = [&random](std::size_t below)
    {
        return static_cast<std::size_t>(random() % below);
    };
    String strings[2];
    std::u16string models[2];
    const auto text = [](const std::u16string& model)
    {
        return reinterpret_cast<const wchar_t*>(model.c_str());
    };
    for (int step = 0; step < 20000; ++step)
    {
        const std::size_t which = number(2);
        String& s = strings[which];
        std::u16string& model = models[which];
        std::u16string part(number(6), u'a');
        for (char16_t& c : part)
            c = static_cast<char16_t>(u'a' + number(3));
        const std::size_t pos = number(model.size() + 2);
        const std::size_t count = number(5);
        switch (number(7))
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
        {
            const std::u16string from = part.substr(0, 2);
            const std::u16string to = part.substr(part.size() / 2);
            int times = 0;
            for (std::size_t at = 0; !from.empty() && (at = model.find(from, at)) != model.npos;
                 at += to.size(), ++times)
                model.replace(at, from.size(), to);
            ASSERT_EQ(s.Replace(String(text(from)), String(text(to))), times) << step;
            break;
        }
        case 5:
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

} // namespace
