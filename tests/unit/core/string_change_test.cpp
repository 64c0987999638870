#include "core/string.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <string_view>

using namespace qx;

namespace
{

TEST(StringChangeTest, FillsWithACharacter)
{
    String s(L"before");
    s.Fill(L'x', 3);
    EXPECT_STREQ(s.Text(), L"xxx");
    s.Fill(L'\0', 3);
    EXPECT_STREQ(s.Text(), L"");
    s.Fill(L'x', 0);
    EXPECT_STREQ(s.Text(), L"");
}

TEST(StringChangeTest, SeparatorStandsOnlyBetweenTexts)
{
    String s;
    s.AppendWithSeparator(L',', String(L"a"));
    EXPECT_STREQ(s.Text(), L"a");
    s.AppendWithSeparator(L',', String(L"b"));
    s.AppendWithSeparator(String(L", "), String(L"c"));
    EXPECT_STREQ(s.Text(), L"a,b, c");
    s.AppendWithSeparator(L',', String());
    EXPECT_STREQ(s.Text(), L"a,b, c,");
}

TEST(StringChangeTest, TrimsWhatItIsToldTo)
{
    String s(L" \t a \t ");
    s.TrimLeft();
    EXPECT_STREQ(s.Text(), L"\t a \t ");
    s.TrimRight();
    EXPECT_STREQ(s.Text(), L"\t a \t");
    s.TrimRight(L'\t');
    EXPECT_STREQ(s.Text(), L"\t a ");
    String blanks(L"   ");
    blanks.TrimLeft();
    EXPECT_TRUE(blanks.IsEmpty());
    blanks = L"   ";
    blanks.TrimRight();
    EXPECT_TRUE(blanks.IsEmpty());
}

TEST(StringChangeTest, ReplacesCharacters)
{
    String s(L"banana");
    EXPECT_EQ(s.Replace(L'a', L'o'), 3);
    EXPECT_STREQ(s.Text(), L"bonono");
    EXPECT_EQ(s.Replace(L'o', L'\0'), 3);
    EXPECT_STREQ(s.Text(), L"bnn");
    EXPECT_EQ(s.Replace(L'x', L'y'), 0);
    EXPECT_EQ(s.Replace(L'n', L'\0'), 2);
    EXPECT_EQ(s.Replace(L'b', L'\0'), 1);
    EXPECT_STREQ(s.Text(), L"");
}

TEST(StringChangeTest, ReplacesTexts)
{
    struct Case
    {
        const wchar_t* text;
        const wchar_t* from;
        const wchar_t* to;
        int count;
        const wchar_t* expected;
    };
    const Case cases[] = {
        {L"aaa", L"a", L"aa", 3, L"aaaaaa"}, // what was inserted isn't searched
        {L"aaaa", L"aa", L"a", 2, L"aa"},
        {L"aaaaa", L"aa", L"bbb", 2, L"bbbbbba"},
        {L"abcabc", L"bc", L"", 2, L"aa"},
        {L"abcabc", L"abc", L"xyz", 2, L"xyzxyz"},
        {L"abc", L"", L"x", 0, L"abc"},
        {L"", L"a", L"x", 0, L""},
        {L"abc", L"abcd", L"x", 0, L"abc"},
        {L"aXb", L"X", L"0123456789", 1, L"a0123456789b"},
        {L"&<>", L"&", L"&amp;", 1, L"&amp;<>"},
    };
    for (const Case& c : cases)
    {
        String s(c.text);
        EXPECT_EQ(s.Replace(String(c.from), String(c.to)), c.count);
        EXPECT_STREQ(s.Text(), c.expected);
        EXPECT_EQ(s.Length(), wcslen(c.expected));
    }
    String roomy(L"aXb");
    roomy.Reserve(64);
    const wchar_t* before = roomy.Text();
    roomy.Replace(String(L"X"), String(L"0123456789"));
    EXPECT_EQ(roomy.Text(), before); // a capacity that suffices is used
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
            s.Replace(String(text(from)), String(text(to)));
            for (std::size_t at = 0; !from.empty() && (at = model.find(from, at)) != model.npos; at += to.size())
                model.replace(at, from.size(), to);
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
