#include "core/module_paths.h"
#include "core/text_hash.h"
#include "prof/path.h"
#include "unit/prof/colliding_names.h"
#include "unit/prof/job_support.h"

#include <set>
#include <utility>
#include <vector>

using namespace qx;
using namespace qxtest;

namespace
{

class CacheSwitch
{
public:
    explicit CacheSwitch(const wchar_t* value)
    {
        const String key = String(L"software\\trelmo\\trlmut\\") + ProcessBaseName();
        RegCreateKeyExW(HKEY_CURRENT_USER, key, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &_key, nullptr);
        RegSetValueExW(_key, L"ProfCacheEnabled", 0, REG_SZ, reinterpret_cast<const BYTE*>(value),
            static_cast<DWORD>((wcslen(value) + 1) * sizeof(wchar_t)));
    }
    ~CacheSwitch()
    {
        RegDeleteValueW(_key, L"ProfCacheEnabled");
        RegCloseKey(_key);
    }
    CacheSwitch(const CacheSwitch&) = delete;
    CacheSwitch& operator=(const CacheSwitch&) = delete;

private:
    HKEY _key = nullptr;
};

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

} // namespace

TEST(ProfIntern, ValuesThatRarelyRepeatStayOut)
{
    const std::pair<const wchar_t*, bool> cases[] = {
        {L"text", true},
        {L"", true},
        {L"123", true},
        {L"1234", false},
        {L"1a", true},
        {L"1abc", false},
        {L"-123", true},
        {L"-1234", false},
        {L"-abcde", true},
        {L"-", true},
        {L"(1,2)", false},
        {L"(", false},
        {L" 12345", true},
    };
    for (const auto& [value, isShared] : cases)
        EXPECT_EQ(AreValuesShared(value), isShared) << String(value).NarrowText();
    EXPECT_TRUE(AreNamesShared());
}

TEST(ProfIntern, SwitchInTheRegistry)
{
    const std::pair<const wchar_t*, bool> cases[] = {{L"F", false}, {L"t", false}, {L"", false}, {L"T", true}};
    for (const auto& [value, isShared] : cases)
    {
        const CacheSwitch cacheSwitch(value);
        EXPECT_EQ(AreValuesShared(L"text"), isShared) << String(value).NarrowText();
        EXPECT_EQ(AreNamesShared(), isShared) << String(value).NarrowText();
    }
    EXPECT_TRUE(AreValuesShared(L"text")) << "a missing value leaves it on";
}

TEST(ProfIntern, ChangingAValueForEverTakesNoMemory)
{
    const JobHolder job = NewJob();
    SetLeafByPath(job->Root(), L"shared", L"text");
    std::set<const wchar_t*> places;
    for (int i = 0; i < 10000; ++i)
    {
        const String number = String(String::formatted, L"%0*d", 4 + i % 60, i);
        SetLeafByPath(job->Root(), L"a", number.Text());
        places.insert(FindLeafByPath(job->Root(), L"a")->ValueText());
        SetLeafByPath(job->Root(), L"a", L"text");
        EXPECT_STREQ(FindLeafByPath(job->Root(), L"a")->ValueText(), L"text");
    }
    EXPECT_LT(places.size(), 60u);
}

// Names made to have one hash: the intern table and the list's index give up on them, and nobody sees it.
TEST(ProfIntern, NamesOfOneHash)
{
    const std::vector<String> names = CollidingNames(1500);
    ASSERT_EQ(names.front().Hash(), names.back().Hash());
    const JobHolder job = NewJob();
    for (size_t round = 0; round < 2; ++round)
    {
        for (const String& name : names)
            SetLeafByPath(job->Root(), name, round == 0 ? std::wstring_view(L"first") : name.Text());
    }
    ASSERT_EQ(job->Root().Count(), names.size());
    size_t i = 0;
    for (const clsItem* item : job->Root())
    {
        EXPECT_STREQ(item->Name().Text(), names[i]);
        EXPECT_STREQ(item->ValueText(), names[i++]);
    }
    for (const String& name : names)
        RemoveByPath(job->Root(), name, ItemKind::Leaf);
    EXPECT_TRUE(job->Root().IsEmpty());
}
