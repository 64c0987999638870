// Entries, lists and paths of a profile in memory.
#include "exports/profile/support.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <tuple>

using namespace profiletest;

namespace
{

void Set(HPROFJOB job, const wchar_t* path, const wchar_t* value)
{
    ProfSetStringW(job, nullptr, path, value);
}

} // namespace

TEST(ProfileJob, LivesUntilItsLastReferenceGoes)
{
    HPROFJOB job = ProfJobOpenW(nullptr);
    Set(job, L"a", L"1");
    ProfJobAddRef(job);
    ProfJobClose(job);
    EXPECT_EQ(Value(job, L"a"), "1");
    EXPECT_EQ(ProfSaveW(job, nullptr, 0), PROF_ERR_CANNOT_WRITE) << "there's no file to save to";
    ProfJobClose(job);
    EXPECT_EQ(ProfGetVersion(3), -1);
}

TEST(ProfileJob, NullJobIsHarmlessEverywhere)
{
    wchar_t buffer[4] = L"xyz";
    ProfJobAddRef(nullptr);
    ProfJobClose(nullptr);
    ProfEmptyList(nullptr, nullptr);
    ProfDeleteListW(nullptr, nullptr, L"a");
    ProfDeleteItemW(nullptr, nullptr, L"a");
    ProfAppendStringA(nullptr, nullptr, "a", "1");
    EXPECT_EQ(ProfGetError(nullptr), PROF_ERR_INVALID_JOB);
    EXPECT_EQ(ProfSaveW(nullptr, L"file", 0), PROF_OK);
    EXPECT_EQ(ProfDebugList(nullptr, nullptr), PROF_ERR_INVALID_JOB);
    EXPECT_EQ(ProfCreateListW(nullptr, nullptr, L"a"), nullptr);
    EXPECT_EQ(ProfCopyList(Job(), nullptr, nullptr, nullptr), PROF_ERR_INVALID_JOB);
    EXPECT_EQ(ProfCopyList(nullptr, nullptr, Job(), nullptr), PROF_ERR_INVALID_JOB);
    EXPECT_EQ(ProfGetStringLengthW(nullptr, nullptr, L"a"), 0);
    EXPECT_EQ(ProfGetStringW(nullptr, nullptr, L"a", buffer, 4, L"default"), 0);
    EXPECT_STREQ(buffer, L"def") << "the default comes before the test of the handle";
    EXPECT_EQ(Tree(nullptr), "");
}

TEST(ProfileTree, SetChangesTheFirstLeafAndAppendAddsOne)
{
    const Job job;
    ProfAppendStringW(job, nullptr, L"a", L"1");
    ProfAppendStringW(job, nullptr, L"a", L"2");
    Set(job, L"A", L"4");
    Set(job, L"a", L"");
    Set(job, L"/x/y/z", L"6");
    ProfAppendStringW(job, ProfGetListW(job, nullptr, L"x"), L"y/z", L"7");
    ProfAppendStringW(job, nullptr, nullptr, L"8");
    Set(job, nullptr, L"9");
    Set(job, L"n", nullptr);
    ProfAppendStringW(job, nullptr, L"n", nullptr);
    EXPECT_EQ(Tree(job), "a=;a=2;A=4;[x]{[y]{z=6;z=7;}}=8;") << "null changes nothing";
    EXPECT_EQ(Value(job, L""), "8") << "the empty path is the empty name";
}

TEST(ProfileTree, ListsByPath)
{
    const Job job;
    const HPROFLIST a = ProfCreateListW(job, nullptr, L"a"), ab = ProfCreateListW(job, a, L"b");
    const HPROFLIST second = ProfAppendListW(job, nullptr, L"a"), onlyInSecond = ProfAppendListW(job, second, L"c");
    const HPROFLIST dots = ProfCreateListW(job, nullptr, L"../d"), root = ProfGetListW(job, a, L"..");
    EXPECT_NE(root, nullptr);
    const std::tuple<HPROFLIST, const wchar_t*, HPROFLIST> cases[] = {{nullptr, L"a", a}, {a, L"b", ab},
        {ab, L"/a", a}, // from the root, whatever the list
        {ab, L"a", nullptr}, {ab, nullptr, ab}, {ab, L"..", a}, {nullptr, L"a/..", root}, {nullptr, L"a/b/..", a},
        {nullptr, L"..", nullptr}, {nullptr, L"../d", dots}, // before a slash it is an ordinary name
        {nullptr, L"a/c", nullptr},                          // only the first list with the name is searched
        {second, L"c", onlyInSecond}, {nullptr, L"A", nullptr}, {nullptr, L"", nullptr}, {nullptr, L"a/", nullptr}};
    for (const auto& [list, path, expected] : cases)
        EXPECT_EQ(ProfGetListW(job, list, path), expected) << Utf8(path ? path : L"(null)");
}

TEST(ProfileTree, CreateEntersAndEmptiesWhereAppendAddsAlways)
{
    const Job job;
    const HPROFLIST b = ProfCreateListW(job, nullptr, L"a/b");
    Set(job, L"a/x", L"1");
    Set(job, L"a/b/y", L"2");
    EXPECT_EQ(ProfCreateListW(job, nullptr, L"/a/b"), b);
    EXPECT_EQ(Tree(job), "[a]{[b]{}x=1;}");
    ProfAppendStringW(job, ProfAppendListW(job, nullptr, L"a/b"), L"z", L"4");
    EXPECT_EQ(Tree(job), "[a]{[b]{}x=1;}[a]{[b]{z=4;}}");
    ProfEmptyList(job, ProfGetListW(job, nullptr, L"a"));
    EXPECT_EQ(Tree(job), "[a]{}[a]{[b]{z=4;}}");
}

TEST(ProfileTree, NewNamesLoseTheirBracketsAndAreCutAt255BeforeASlash)
{
    const Job job, copy;
    ProfCreateListW(job, nullptr, L"[a]");
    ProfCreateListW(job, nullptr, L"[a]");
    for (const wchar_t* name : {L"[bc", L"[", L"[[d]]", L"e]"})
        ProfAppendListW(job, nullptr, name);
    EXPECT_EQ(Tree(job), "[a]{}[a]{}[b]{}[]{}[[d]]{}[e]]{}") << "the list never matches what it was asked for by";
    EXPECT_EQ(ProfCopyList(copy, nullptr, job, nullptr), PROF_OK);
    EXPECT_EQ(Tree(copy), "[a]{}[a]{}[b]{}[]{}[d]{}[e]]{}") << "a copy is a new list too";

    const Wide name255(255, L'n');
    Wide longer(300, L'n');
    ProfCreateListW(job, nullptr, longer);
    EXPECT_EQ(ProfGetListW(job, nullptr, name255), nullptr) << "the last component isn't cut";
    EXPECT_NE(ProfGetListW(job, nullptr, longer), nullptr);
    longer += L"/leaf";
    Set(job, longer, L"1");
    EXPECT_EQ(Value(job, L"leaf", ProfGetListW(job, nullptr, name255)), "1");
}

TEST(ProfileTree, Deleting)
{
    constexpr char kWhole[] = "x=1;x=1;y=1;[l]{x=2;[m]{}[m]{}}[l]{x=2;[m]{}[m]{}}[]{x=3;}";
    const TempFolder folder;
    const std::string list = "[l]\nx=2\n[m]\n}\n[m]\n}\n}\n";
    const std::string file = folder.Make("file", "[/]\nx=1\nx=1\ny=1\n" + list + list + "[]\nx=3\n");
    ASSERT_EQ(Tree(Job(file)), kWhole);
    const std::tuple<bool, const wchar_t*, const char*> cases[] = {
        {false, L"x", "y=1;[l]{x=2;[m]{}[m]{}}[l]{x=2;[m]{}[m]{}}[]{x=3;}"},
        {false, L"l/x", "x=1;x=1;y=1;[l]{[m]{}[m]{}}[l]{[m]{}[m]{}}[]{x=3;}"}, // in every matching list
        {false, L"/x",
            "x=1;x=1;y=1;[l]{x=2;[m]{}[m]{}}[l]{x=2;[m]{}[m]{}}[]{}"}, // the name before a leading slash is empty
        {false, L"l", kWhole}, {false, nullptr, kWhole}, {false, L"", ""},
        {true, L"l/m", "x=1;x=1;y=1;[l]{x=2;}[l]{x=2;}[]{x=3;}"}, {true, L"x", kWhole}, {true, L"", ""},
        {true, nullptr, kWhole} // the root isn't an entry of any list
    };
    for (const auto& [isList, path, left] : cases)
    {
        const Job job(file);
        (isList ? ProfDeleteListW : ProfDeleteItemW)(job, nullptr, path);
        EXPECT_EQ(Tree(job), left) << Utf8(path ? path : L"(null)");
    }
    const Job job(file);
    ProfDeleteListW(job, ProfGetListW(job, nullptr, L"l/m"), nullptr);
    EXPECT_EQ(Tree(job), "x=1;x=1;y=1;[l]{x=2;[m]{}}[l]{x=2;[m]{}[m]{}}[]{x=3;}") << "only the list of the handle";
}

TEST(ProfileTree, GetStringCutsAndTellsTheWholeLength)
{
    const Job job;
    Set(job, L"a", L"abcdef");
    const std::tuple<const char*, std::int32_t, std::int32_t, const char*> cases[] = {{"a", 6, 6, "abcde"},
        {"a", 7, 6, "abcdef"}, {"a", 1, 6, ""}, {"a", 0, 6, "##########"}, {"b", 8, PROF_ERR_NO_LEAF, "default"},
        {"b", 0, PROF_ERR_NO_LEAF, "##########"}};
    for (const auto& [path, size, result, text] : cases)
    {
        wchar_t buffer[] = L"##########";
        EXPECT_EQ(ProfGetStringW(job, nullptr, Wide(path), buffer, size, L"default"), result);
        EXPECT_EQ(Utf8(buffer), text) << path << ", size " << size;
        char bytes[] = "##########";
        EXPECT_EQ(ProfGetStringA(job, nullptr, path, bytes, size, "default"), result);
        EXPECT_STREQ(bytes, text) << path << ", size " << size;
    }
    wchar_t buffer[] = L"own";
    EXPECT_EQ(ProfGetStringW(job, nullptr, L"b", buffer, 4, buffer), PROF_ERR_NO_LEAF);
    EXPECT_STREQ(buffer, L"own");
    EXPECT_EQ(ProfGetStringW(job, nullptr, L"a", buffer, -1, buffer), 6);
    EXPECT_EQ(ProfGetStringW(job, nullptr, L"a", nullptr, 4, nullptr), 6);
}

TEST(ProfileEnum, StopsOnZeroAndLetsTheCallbackChangeAndRemoveItsEntry)
{
    const Job job;
    for (const wchar_t* name : {L"a", L"b", L"c", L"d"})
        Set(job, name, L"12345"); // numbers aren't interned, so the leaf owns its text
    int visits = 0;
    const auto stop = [](HPROFJOB, const wchar_t*, const wchar_t*, HPROFLIST, void* context) -> std::int32_t
    {
        return ++*static_cast<int*>(context) < 2;
    };
    EXPECT_EQ(ProfEnumW(job, nullptr, stop, &visits), 0);
    EXPECT_EQ(visits, 2);
    EXPECT_EQ(ProfEnumW(job, nullptr, nullptr, nullptr), 0);
    const auto change = [](HPROFJOB owner, const wchar_t* name, const wchar_t* value, HPROFLIST, void*) -> std::int32_t
    {
        if (*name == L'a' || *name == L'd')
            ProfDeleteItemW(owner, nullptr, name);
        else
            ProfSetStringW(owner, nullptr, name, value + 1); // a part of the value being replaced
        return 1;
    };
    EXPECT_EQ(ProfEnumW(job, nullptr, change, nullptr), 1);
    EXPECT_EQ(Tree(job), "b=2345;c=2345;");
}

TEST(ProfileCopy, ListIntoItselfAndIntoItsOwnChild)
{
    const Job job;
    Set(job, L"l/m/b", L"2");
    const HPROFLIST list = ProfGetListW(job, nullptr, L"l");
    EXPECT_EQ(ProfCopyList(job, list, job, list), PROF_OK);
    EXPECT_EQ(Tree(job), "[l]{[m]{b=2;}[m]{b=2;}}");
    EXPECT_EQ(ProfCopyList(job, ProfGetListW(job, list, L"m"), job, nullptr), PROF_OK);
    EXPECT_EQ(Tree(job), "[l]{[m]{b=2;[l]{[m]{b=2;}[m]{b=2;}}}[m]{b=2;}}");
    const HPROFLIST copy = ProfGetListW(job, nullptr, L"l/m/l");
    EXPECT_EQ(ProfGetListW(job, ProfGetListW(job, copy, L"m"), L".."), copy);
}

// Umlauts exist in all western code pages and in UTF-8, so the test works with any of them.
TEST(ProfileNarrow, ConvertsArgumentsBuffersAndCallbacks)
{
    const Job job;
    ProfSetStringA(job, nullptr, "l/a", "text");
    ProfAppendStringA(job, ProfGetListA(job, nullptr, "l"), "a", "more");
    ProfAppendStringA(job, nullptr, nullptr, "nameless");
    ProfCreateListA(job, nullptr, "m");
    ProfAppendListA(job, nullptr, "m");
    EXPECT_EQ(Tree(job), "[l]{a=text;a=more;}=nameless;[m]{}[m]{}");
    const HPROFLIST list = ProfGetListA(job, nullptr, "l");
    EXPECT_EQ(ProfGetListA(job, list, nullptr), list) << "null stays null";
    EXPECT_EQ(ProfGetStringLengthA(job, nullptr, "l/a"), 4);
    ProfDeleteItemA(job, nullptr, "l/a");
    ProfDeleteListA(job, nullptr, "m");
    EXPECT_EQ(Tree(job), "[l]{}=nameless;");

    ProfEmptyList(job, nullptr);
    Set(job, L"Gr\u00F6\u00DFe", L"\u00E4\u00F6\u00FC");
    std::string name;
    const auto collect = [](HPROFJOB, const char* text, const char*, HPROFLIST, void* context) -> std::int32_t
    {
        *static_cast<std::string*>(context) = text;
        return 0;
    };
    EXPECT_EQ(ProfEnumA(job, nullptr, collect, &name), 0);
    EXPECT_EQ(ProfEnumA(job, nullptr, nullptr, nullptr), 0);
    char value[8] = {};
    EXPECT_EQ(ProfGetStringA(job, nullptr, name.c_str(), value, 8, ""), 3);
    ProfSetStringA(job, nullptr, "copy", value);
    EXPECT_EQ(Value(job, L"copy"), "\xC3\xA4\xC3\xB6\xC3\xBC");
}
