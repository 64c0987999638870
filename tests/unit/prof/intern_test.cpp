#include "core/text/text_hash.h"
#include "module/module_paths.h"
#include "prof/path.h"
#include "support/own_settings.h"
#include "unit/prof/job_support.h"

#include <cstdint>
#include <cstring>
#include <set>
#include <utility>
#include <vector>

using namespace qx;
using namespace qxtest;

namespace
{

bool AreValuesShared(const wchar_t* value)
{
    const JobHolder job = NewJob();
    AppendLeafByPath(job->Root(), L"a", value);
    AppendLeafByPath(job->Root(), L"b", value);
    return (*job->Root().First())->ValueText() == (*job->Root().Last())->ValueText();
}

bool AreNamesShared()
{
    const JobHolder job = NewJob();
    AppendLeafByPath(job->Root(), L"a", L"1");
    AppendLeafByPath(job->Root(), L"l/a", L"2");
    return &FindLeafByPath(job->Root(), L"a")->Name() == &FindLeafByPath(job->Root(), L"l/a")->Name();
}

// Loads 20,000 values of a field whose name has 40,000 characters.
bool AreManyLongNamesLoaded()
{
    std::string source = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<xfdf >\n";
    for (int i = 0; i < 20000; ++i)
        source += "<field name=\"x\">\n";
    for (int i = 0; i < 20000; ++i)
        source += "<value/>\n";
    const JobHolder job = NewJob();
    clsFileRO file{MemoryStream(source)};
    return job->Load(file);
}

// Returns the unit that takes the hash from one state to another. Each step of the hash is invertible.
std::uint64_t UnitBetween(std::uint64_t from, std::uint64_t to)
{
    constexpr std::uint64_t kFactor = 0x9DDFEA08EB382D69;
    std::uint64_t inverse = kFactor; // each round doubles the number of correct bits
    for (int round = 0; round < 6; ++round)
        inverse *= 2 - kFactor * inverse;
    const auto unshift = [](std::uint64_t mixed)
    {
        return mixed ^ (mixed >> 47);
    };
    const std::uint64_t b = unshift(to * inverse), a = unshift((b * inverse) ^ from);
    return (a * inverse) ^ from;
}

// Returns names of 8 characters without zeros and slashes that all have the same hash.
std::vector<String> CollidingNames(std::size_t count)
{
    std::vector<String> names;
    for (wchar_t i = 1; names.size() < count; ++i)
    {
        wchar_t text[9] = {L'n', L'a', L'm', i};
        const std::uint64_t unit = UnitBetween(TextHash({text, 4}), 0x0123456789ABCDEF);
        memcpy(text + 4, &unit, sizeof(unit));
        if (wcslen(text) == 8 && wcschr(text, L'/') == nullptr)
            names.emplace_back(text);
    }
    return names;
}

} // namespace

TEST(ProfIntern, ValuesThatRarelyRepeatStayOut)
{
    const std::pair<const wchar_t*, bool> cases[] = {{L"text", true}, {L"", true}, {L"123", true}, {L"1234", false},
        {L"1a", true}, {L"1abc", false}, {L"-123", true}, {L"-1234", false}, {L"-abcde", true}, {L"-", true},
        {L"(", false}, {L" 12345", true}};
    for (const auto& [value, isShared] : cases)
        EXPECT_EQ(AreValuesShared(value), isShared) << String(value).NarrowText();
}

TEST(ProfIntern, SwitchInTheRegistry)
{
    const OwnSettings settings;
    const String key = String(L"software\\trelmo\\trlmut\\") + ProcessBaseName();
    EXPECT_TRUE(AreValuesShared(L"text") && AreNamesShared()) << "a missing value leaves it on";
    for (const wchar_t* value : {L"F", L"t", L"", L"T"})
    {
        ASSERT_TRUE(settings.Set(HKEY_CURRENT_USER, L"ProfCacheEnabled", value, key));
        EXPECT_EQ(AreValuesShared(L"text"), *value == L'T') << String(value).NarrowText();
        EXPECT_EQ(AreNamesShared(), *value == L'T') << String(value).NarrowText();
        EXPECT_EQ(AreManyLongNamesLoaded(), *value == L'T') << "names that aren't shared count once for each value";
    }
}

TEST(ProfIntern, ChangingAValueForEverTakesNoMemory)
{
    const JobHolder job = NewJob();
    SetLeafByPath(job->Root(), L"shared", L"text");
    std::set<const wchar_t*> places;
    for (int i = 0; i < 10000; ++i)
    {
        SetLeafByPath(job->Root(), L"a", String(String::kFormatted, L"%0*d", 4 + i % 60, i).View());
        places.insert(FindLeafByPath(job->Root(), L"a")->ValueText());
        SetLeafByPath(job->Root(), L"a", L"text");
    }
    EXPECT_LT(places.size(), 60u);
}

// Values of both kinds, shared and owned by their items, that keep growing and shrinking. The memory they release is
// reused.
TEST(ProfIntern, ValuesThatChangeTheirSizesWasteLittle)
{
    const auto text = [](wchar_t first, std::size_t length, std::size_t number)
    {
        std::vector<wchar_t> characters(length, first);
        for (std::size_t i = 1; i < length && number != 0; ++i, number /= 10)
            characters[i] = static_cast<wchar_t>(L'0' + number % 10);
        return characters;
    };
    const auto set = [](const JobHolder& job, std::size_t item, const std::vector<wchar_t>& value)
    {
        SetLeafByPath(job->Root(), String::FromInt(static_cast<int>(item)), {value.data(), value.size()});
    };
    for (const wchar_t first : {L'x', L'1'})
    {
        const JobHolder large = NewJob();
        for (std::size_t i = 0; i < 500; ++i)
            set(large, 0, text(first, (i + 1) * 1000, 0));
        EXPECT_LT(large->Arena().Bytes(), 1500000u) << "one value, growing";
        for (std::size_t i = 500; i != 0; --i)
            set(large, 0, text(first, i * 1000, 0));
        EXPECT_LT(large->Arena().Bytes(), 1500000u) << "one value, shrinking";

        constexpr std::size_t kItems = 2000;
        const JobHolder many = NewJob();
        for (std::size_t length = 8; length <= 500; length += 8)
            for (std::size_t i = 0; i < kItems; ++i)
                set(many, i, text(first, length, i));
        EXPECT_LT(many->Arena().Bytes(), 3 * kItems * 1000) << "growing together";
        for (std::size_t length = 500; length >= 8; length -= 4)
            for (std::size_t i = 0; i < kItems; ++i)
                set(many, i, text(first, length, i));
        EXPECT_LT(many->Arena().Bytes(), 2000000u) << "shrinking together";
        for (std::size_t i = 0; i < kItems; ++i)
            EXPECT_TRUE(FindLeafByPath(many->Root(), String::FromInt(static_cast<int>(i)))->Value() ==
                        std::wstring_view(text(first, 8, i).data(), 8));
    }
}

// Names constructed to have the same hash, as in a hostile file. The intern table and the list's index give up on them,
// without any visible effect.
TEST(ProfIntern, NamesOfOneHash)
{
    const std::vector<String> names = CollidingNames(1500);
    ASSERT_EQ(names.front().Hash(), names.back().Hash());
    const JobHolder job = NewJob();
    String expected;
    for (const String& name : names)
        SetLeafByPath(job->Root(), name, L"first");
    for (const String& name : names)
    {
        SetLeafByPath(job->Root(), name, name.Text());
        expected += name + L"=" + name + L";";
    }
    EXPECT_TRUE(Tree(job->Root()) == expected);
    for (const String& name : names)
        RemoveByPath(job->Root(), name, ItemKind::Leaf);
    EXPECT_TRUE(job->Root().IsEmpty());
}
