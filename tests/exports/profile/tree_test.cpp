#include "exports/profile/support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

using namespace profiletest;

namespace
{

void Set(HPROFJOB job, const wchar_t* path, const wchar_t* value)
{
    ProfSetStringW(job, nullptr, path, value);
}

} // namespace

TEST(ProfileJob, VersionsAndEmptyJob)
{
    EXPECT_EQ(ProfGetVersion(0), 5890);
    EXPECT_EQ(ProfGetVersion(1), 23);
    EXPECT_EQ(ProfGetVersion(2), 2);
    EXPECT_EQ(ProfGetVersion(3), -1);
    EXPECT_EQ(ProfGetVersion(-1), -1);

    const Job job;
    EXPECT_EQ(job.Error(), PROF_OK);
    EXPECT_EQ(ProfSaveW(job, nullptr, 0), PROF_ERR_CANNOT_WRITE) << "there's no file to save to";
    EXPECT_EQ(Job(ProfJobOpenA(nullptr)).Error(), PROF_OK);
    EXPECT_EQ(Job(ProfJobOpenExclusiveW(nullptr)).Error(), PROF_OK);
}

TEST(ProfileJob, LivesUntilItsLastReferenceGoes)
{
    HPROFJOB job = ProfJobOpenW(nullptr);
    Set(job, L"a", L"1");
    ProfJobAddRef(job);
    ProfJobClose(job);
    EXPECT_EQ(Value(job, L"a"), "1");
    ProfJobClose(job);
}

TEST(ProfileJob, NullJobIsHarmlessEverywhere)
{
    wchar_t buffer[4] = L"xyz";
    ProfJobAddRef(nullptr);
    ProfJobClose(nullptr);
    ProfEmptyList(nullptr, nullptr);
    ProfDeleteListW(nullptr, nullptr, L"a");
    ProfDeleteItemW(nullptr, nullptr, L"a");
    ProfSetStringW(nullptr, nullptr, L"a", L"1");
    ProfAppendStringA(nullptr, nullptr, "a", "1");
    EXPECT_EQ(ProfGetError(nullptr), PROF_ERR_INVALID_JOB);
    EXPECT_EQ(ProfSaveW(nullptr, L"file", 0), PROF_OK);
    EXPECT_EQ(ProfDebugList(nullptr, nullptr), PROF_ERR_INVALID_JOB);
    EXPECT_EQ(ProfGetListW(nullptr, nullptr, L"a"), nullptr);
    EXPECT_EQ(ProfCreateListW(nullptr, nullptr, L"a"), nullptr);
    EXPECT_EQ(ProfAppendListW(nullptr, nullptr, L"a"), nullptr);
    EXPECT_EQ(ProfCopyList(Job(), nullptr, nullptr, nullptr), PROF_ERR_INVALID_JOB);
    EXPECT_EQ(ProfCopyList(nullptr, nullptr, Job(), nullptr), PROF_ERR_INVALID_JOB);
    EXPECT_EQ(ProfGetStringLengthW(nullptr, nullptr, L"a"), 0);
    EXPECT_EQ(ProfGetStringW(nullptr, nullptr, L"a", buffer, 4, L"default"), 0);
    EXPECT_STREQ(buffer, L"def") << "the default comes before the test of the handle";
    EXPECT_EQ(ProfEnumW(
                  nullptr, nullptr, [](auto...) -> int32_t { return 1; }, nullptr),
        0);
}

TEST(ProfileTree, SetChangesTheFirstLeafAndAppendAddsOne)
{
    const Job job;
    ProfAppendStringW(job, nullptr, L"a", L"1");
    ProfAppendStringW(job, nullptr, L"a", L"2");
    Set(job, L"a", L"3");
    Set(job, L"A", L"4");
    Set(job, L"a", L"");
    Set(job, L"x/y/z", L"5");
    Set(job, L"/x/y/z", L"6");
    ProfAppendStringW(job, ProfGetListW(job, nullptr, L"x"), L"y/z", L"7");
    ProfAppendStringW(job, nullptr, nullptr, L"8");
    EXPECT_EQ(Tree(job), "a=;a=2;A=4;[x]{[y]{z=6;z=7;}}=8;");
    EXPECT_EQ(Value(job, L""), "8") << "the empty path is the empty name";

    ProfSetStringW(job, nullptr, nullptr, L"9");
    ProfSetStringW(job, nullptr, L"n", nullptr);
    ProfAppendStringW(job, nullptr, L"n", nullptr);
    EXPECT_EQ(Tree(job), "a=;a=2;A=4;[x]{[y]{z=6;z=7;}}=8;") << "null changes nothing";
}

TEST(ProfileTree, LeafAndListMayHaveOneName)
{
    const Job job;
    const HPROFLIST list = ProfCreateListW(job, nullptr, L"a");
    Set(job, L"a", L"leaf");
    Set(job, L"a/b", L"below");
    EXPECT_EQ(Tree(job), "[a]{b=below;}a=leaf;");
    EXPECT_EQ(Value(job, L"a"), "leaf");
    EXPECT_EQ(ProfGetListW(job, nullptr, L"a"), list);

    ProfDeleteItemW(job, nullptr, L"a");
    EXPECT_EQ(Tree(job), "[a]{b=below;}");
    Set(job, L"a", L"leaf");
    ProfDeleteListW(job, nullptr, L"a");
    EXPECT_EQ(Tree(job), "a=leaf;");
}

TEST(ProfileTree, ListsByPath)
{
    const Job job;
    const HPROFLIST a = ProfCreateListW(job, nullptr, L"a");
    const HPROFLIST ab = ProfCreateListW(job, a, L"b");
    const HPROFLIST second = ProfAppendListW(job, nullptr, L"a");
    const HPROFLIST onlyInSecond = ProfAppendListW(job, second, L"c");
    const HPROFLIST dots = ProfCreateListW(job, nullptr, L"../d");
    const HPROFLIST root = ProfGetListW(job, a, L"..");

    const std::pair<std::pair<HPROFLIST, const wchar_t*>, HPROFLIST> cases[] = {
        {{nullptr, L"a"}, a},
        {{nullptr, L"a/b"}, ab},
        {{a, L"b"}, ab},
        {{ab, L"/a"}, a}, // from the root, whatever list is given
        {{ab, L"a"}, nullptr},
        {{ab, nullptr}, ab},
        {{ab, L".."}, a},
        {{nullptr, L"a/.."}, root},
        {{nullptr, L"a/b/.."}, a},
        {{nullptr, L".."}, nullptr},
        {{nullptr, L"../d"}, dots},   // in front of a slash it is a name like others
        {{nullptr, L"a/c"}, nullptr}, // no going back to the second list of the name
        {{second, L"c"}, onlyInSecond},
        {{nullptr, L"A"}, nullptr},
        {{nullptr, L""}, nullptr},
        {{nullptr, L"a/"}, nullptr},
    };
    EXPECT_NE(root, nullptr);
    for (const auto& [place, expected] : cases)
        EXPECT_EQ(ProfGetListW(job, place.first, place.second), expected)
            << Utf8(place.second ? place.second : L"(null)");
}

TEST(ProfileTree, CreateEntersAndEmptiesWhereAppendAddsAlways)
{
    const Job job;
    const HPROFLIST b = ProfCreateListW(job, nullptr, L"a/b");
    Set(job, L"a/x", L"1");
    Set(job, L"a/b/y", L"2");
    EXPECT_EQ(ProfCreateListW(job, nullptr, L"/a/b"), b);
    EXPECT_EQ(Tree(job), "[a]{[b]{}x=1;}");

    const HPROFLIST appended = ProfAppendListW(job, nullptr, L"a/b");
    Set(job, L"a/x", L"3");
    ProfAppendStringW(job, appended, L"z", L"4");
    EXPECT_EQ(Tree(job), "[a]{[b]{}x=3;}[a]{[b]{z=4;}}");

    ProfEmptyList(job, ProfGetListW(job, nullptr, L"a"));
    EXPECT_EQ(Tree(job), "[a]{}[a]{[b]{z=4;}}");
    ProfEmptyList(job, nullptr);
    EXPECT_EQ(Tree(job), "");
}

TEST(ProfileTree, NameOfANewListLosesItsBrackets)
{
    const Job job, copy;
    ProfCreateListW(job, nullptr, L"[a]");
    ProfCreateListW(job, nullptr, L"[a]");
    ProfAppendListW(job, nullptr, L"[bc");
    ProfAppendListW(job, nullptr, L"[");
    ProfAppendListW(job, nullptr, L"[[d]]");
    ProfAppendListW(job, nullptr, L"e]");
    EXPECT_EQ(Tree(job), "[a]{}[a]{}[b]{}[]{}[[d]]{}[e]]{}") << "the list never matches what it was asked for by";
    EXPECT_EQ(ProfCopyList(copy, nullptr, job, nullptr), PROF_OK);
    EXPECT_EQ(Tree(copy), "[a]{}[a]{}[b]{}[]{}[d]{}[e]]{}") << "a copy is a new list too";
}

TEST(ProfileTree, ComponentBeforeASlashIsCutAt255)
{
    const Job job;
    const Wide name255(255, L'n');
    Wide longer(300, L'n');
    ProfCreateListW(job, nullptr, longer);
    EXPECT_EQ(ProfGetListW(job, nullptr, name255), nullptr) << "the last component isn't cut";
    EXPECT_NE(ProfGetListW(job, nullptr, longer), nullptr);

    longer += L"/leaf";
    Set(job, longer, L"1");
    Wide cut(255, L'n');
    cut += L"/leaf";
    EXPECT_EQ(Value(job, cut), "1");
    EXPECT_EQ(Value(job, L"leaf", ProfGetListW(job, nullptr, name255)), "1");
}

TEST(ProfileTree, Deleting)
{
    const auto make = []
    {
        Job job;
        for (const wchar_t* path : {L"x", L"x", L"y"})
            ProfAppendStringW(job, nullptr, path, L"1");
        for (int i = 0; i < 2; ++i)
        {
            const HPROFLIST list = ProfAppendListW(job, nullptr, L"l");
            ProfAppendStringW(job, list, L"x", L"2");
            ProfAppendListW(job, list, L"m");
            ProfAppendListW(job, list, L"m");
        }
        ProfAppendStringW(job, ProfAppendListW(job, nullptr, L""), L"x", L"3");
        return job;
    };
    constexpr char kWhole[] = "x=1;x=1;y=1;[l]{x=2;[m]{}[m]{}}[l]{x=2;[m]{}[m]{}}[]{x=3;}";
    ASSERT_EQ(Tree(make()), kWhole);

    const struct
    {
        bool isList;
        const wchar_t* path;
        const char* left;
    } cases[] = {
        {false, L"x", "y=1;[l]{x=2;[m]{}[m]{}}[l]{x=2;[m]{}[m]{}}[]{x=3;}"},
        {false, L"l/x", "x=1;x=1;y=1;[l]{[m]{}[m]{}}[l]{[m]{}[m]{}}[]{x=3;}"},    // in every matching list
        {false, L"/x", "x=1;x=1;y=1;[l]{x=2;[m]{}[m]{}}[l]{x=2;[m]{}[m]{}}[]{}"}, // a slash stands behind a name
        {false, L"l", kWhole}, {false, L"n/x", kWhole}, {false, nullptr, kWhole}, {false, L"", ""},
        {true, L"l/m", "x=1;x=1;y=1;[l]{x=2;}[l]{x=2;}[]{x=3;}"}, {true, L"l", "x=1;x=1;y=1;[]{x=3;}"},
        {true, L"x", kWhole}, {true, L"", ""}, {true, nullptr, kWhole}, // the root has no entry
    };
    for (const auto& test : cases)
    {
        const Job job = make();
        (test.isList ? ProfDeleteListW : ProfDeleteItemW)(job, nullptr, test.path);
        EXPECT_EQ(Tree(job), test.left) << Utf8(test.path ? test.path : L"(null)");
    }

    const Job job = make();
    ProfDeleteListW(job, ProfGetListW(job, nullptr, L"l/m"), nullptr);
    EXPECT_EQ(Tree(job), "x=1;x=1;y=1;[l]{x=2;[m]{}}[l]{x=2;[m]{}[m]{}}[]{x=3;}") << "only the list of the handle";
}

TEST(ProfileTree, GetStringCutsAndTellsTheWholeLength)
{
    const Job job;
    Set(job, L"a", L"abcdef");
    const struct
    {
        const wchar_t* path;
        int32_t size;
        int32_t result;
        const wchar_t* text;
    } cases[] = {
        {L"a", 4, 6, L"abc"},
        {L"a", 6, 6, L"abcde"},
        {L"a", 7, 6, L"abcdef"},
        {L"a", 1, 6, L""},
        {L"a", 0, 6, L"##########"},
        {L"a", -1, 6, L"##########"},
        {L"b", 8, PROF_ERR_NO_LEAF, L"default"},
        {L"b", 3, PROF_ERR_NO_LEAF, L"de"},
        {L"b", 0, PROF_ERR_NO_LEAF, L"##########"},
    };
    for (const auto& test : cases)
    {
        wchar_t buffer[] = L"##########";
        EXPECT_EQ(ProfGetStringW(job, nullptr, test.path, buffer, test.size, L"default"), test.result);
        EXPECT_STREQ(buffer, test.text) << Utf8(test.path) << ", size " << test.size;
    }

    wchar_t buffer[] = L"own";
    EXPECT_EQ(ProfGetStringW(job, nullptr, L"b", buffer, 4, buffer), PROF_ERR_NO_LEAF);
    EXPECT_STREQ(buffer, L"own");
    EXPECT_EQ(ProfGetStringW(job, nullptr, L"b", buffer, 4, nullptr), PROF_ERR_NO_LEAF);
    EXPECT_STREQ(buffer, L"");
    EXPECT_EQ(ProfGetStringW(job, nullptr, L"a", nullptr, 4, nullptr), 6);
    EXPECT_EQ(ProfGetStringLengthW(job, nullptr, L"a"), 6);
    EXPECT_EQ(ProfGetStringLengthW(job, nullptr, L"b"), PROF_ERR_NO_LEAF);
}

TEST(ProfileEnum, VisitsInOrderAndStopsOnZero)
{
    const Job job;
    Set(job, L"a", L"1");
    Set(job, L"l/b", L"2");
    Set(job, L"c", L"");
    EXPECT_EQ(Tree(job), "a=1;[l]{b=2;}c=;");

    int visits = 0;
    const auto stop = [](HPROFJOB, const wchar_t*, const wchar_t*, HPROFLIST, void* context) -> int32_t
    {
        return ++*static_cast<int*>(context) < 2;
    };
    EXPECT_EQ(ProfEnumW(job, nullptr, stop, &visits), 0);
    EXPECT_EQ(visits, 2);
    EXPECT_EQ(ProfEnumW(job, ProfGetListW(job, nullptr, L"l"), stop, &(visits = 0)), 1);
    EXPECT_EQ(ProfEnumW(job, nullptr, nullptr, nullptr), 0);
}

TEST(ProfileEnum, CallbackMayChangeAndRemoveItsEntry)
{
    const Job job;
    for (const wchar_t* name : {L"a", L"b", L"c", L"d"})
        Set(job, name, L"12345"); // a number isn't shared, so that the leaf owns its text
    ProfEnumW(
        job, nullptr,
        [](HPROFJOB owner, const wchar_t* name, const wchar_t* value, HPROFLIST, void*) -> int32_t
        {
            if (*name == L'a' || *name == L'd')
                ProfDeleteItemW(owner, nullptr, name);
            else
                ProfSetStringW(owner, nullptr, name, value + 1); // a part of the value that it replaces
            return 1;
        },
        nullptr);
    EXPECT_EQ(Tree(job), "b=2345;c=2345;");
}

TEST(ProfileCopy, CopiesDeepBehindWhatIsThere)
{
    const Job source, target;
    Set(source, L"a", L"1");
    Set(source, L"l/m/b", L"2");
    ProfAppendStringW(source, nullptr, L"a", L"(3,4)");
    Set(target, L"a", L"0");
    EXPECT_EQ(ProfCopyList(target, nullptr, source, nullptr), PROF_OK);
    EXPECT_EQ(ProfCopyList(target, ProfCreateListW(target, nullptr, L"t"), source, ProfGetListW(source, nullptr, L"l")),
        PROF_OK);
    ProfEmptyList(source, nullptr);
    EXPECT_EQ(Tree(target), "a=0;a=1;[l]{[m]{b=2;}}a=(3,4);[t]{[m]{b=2;}}");
    EXPECT_EQ(ProfGetListW(target, ProfGetListW(target, nullptr, L"l/m"), L".."), ProfGetListW(target, nullptr, L"l"));
    EXPECT_EQ(ProfGetListW(target, ProfGetListW(target, nullptr, L"l"), L"../.."), nullptr);
}

TEST(ProfileCopy, ListIntoItselfAndIntoItsOwnChild)
{
    const Job job;
    Set(job, L"l/a", L"1");
    Set(job, L"l/m/b", L"2");
    const HPROFLIST list = ProfGetListW(job, nullptr, L"l");
    EXPECT_EQ(ProfCopyList(job, list, job, list), PROF_OK);
    EXPECT_EQ(Tree(job), "[l]{a=1;[m]{b=2;}a=1;[m]{b=2;}}");

    ProfEmptyList(job, list);
    Set(job, L"l/m/b", L"2");
    EXPECT_EQ(ProfCopyList(job, ProfGetListW(job, list, L"m"), job, nullptr), PROF_OK);
    EXPECT_EQ(Tree(job), "[l]{[m]{b=2;[l]{[m]{b=2;}}}}");
}

TEST(ProfileNarrow, ConvertsArgumentsBuffersAndCallbacks)
{
    const Job job;
    ProfSetStringA(job, nullptr, "l/a", "text");
    ProfAppendStringA(job, ProfGetListA(job, nullptr, "l"), "a", "more");
    ProfAppendStringA(job, nullptr, nullptr, "nameless");
    ProfCreateListA(job, nullptr, "m");
    ProfAppendListA(job, nullptr, "m");
    EXPECT_EQ(Tree(job), "[l]{a=text;a=more;}=nameless;[m]{}[m]{}");
    EXPECT_EQ(ProfGetListA(job, ProfGetListA(job, nullptr, "l"), nullptr), ProfGetListA(job, nullptr, "l"))
        << "null stays null";

    const struct
    {
        const char* path;
        int32_t size;
        int32_t result;
        const char* text;
    } cases[] = {
        {"l/a", 5, 4, "text"},
        {"l/a", 4, 4, "tex"},
        {"l/a", 1, 4, ""},
        {"l/a", 0, 4, "##########"},
        {"l/b", 10, PROF_ERR_NO_LEAF, "default"},
        {"l/b", 0, PROF_ERR_NO_LEAF, "##########"},
    };
    for (const auto& test : cases)
    {
        char buffer[] = "##########";
        EXPECT_EQ(ProfGetStringA(job, nullptr, test.path, buffer, test.size, "default"), test.result);
        EXPECT_STREQ(buffer, test.text) << test.path << ", size " << test.size;
    }
    char own[] = "own";
    EXPECT_EQ(ProfGetStringA(job, nullptr, "l/b", own, 4, own), PROF_ERR_NO_LEAF);
    EXPECT_STREQ(own, "own");
    EXPECT_EQ(ProfGetStringLengthA(job, nullptr, "l/a"), 4);

    std::string seen;
    const auto collect = [](HPROFJOB, const char* name, const char* value, HPROFLIST child, void* context) -> int32_t
    {
        auto& text = *static_cast<std::string*>(context);
        text += std::string(name) + "=" + value + (child != nullptr ? "+" : ";");
        return *name == 'l' || *name == 0;
    };
    EXPECT_EQ(ProfEnumA(job, nullptr, collect, &seen), 0);
    EXPECT_EQ(seen, "l=+=nameless;m=+");
    EXPECT_EQ(ProfEnumA(job, nullptr, nullptr, nullptr), 0);

    ProfDeleteItemA(job, nullptr, "l/a");
    ProfDeleteListA(job, nullptr, "m");
    EXPECT_EQ(Tree(job), "[l]{}=nameless;");
}

// Umlauts are in every western code page and in UTF-8, whichever the process has.
TEST(ProfileNarrow, LettersOfTheCodePageComeBack)
{
    const Job job;
    Set(job, L"Gr\u00F6\u00DFe", L"\u00E4\u00F6\u00FC");
    char name[8] = {}, value[8] = {}, again[8] = {};
    ProfEnumA(
        job, nullptr,
        [](HPROFJOB, const char* text, const char*, HPROFLIST, void* context) -> int32_t
        {
            std::copy_n(
                text, std::min<size_t>(std::char_traits<char>::length(text) + 1, 8), static_cast<char*>(context));
            return 1;
        },
        name);
    EXPECT_EQ(ProfGetStringA(job, nullptr, name, value, 8, ""), 3);
    ProfSetStringA(job, nullptr, "copy", value);
    EXPECT_EQ(Value(job, L"copy"), "\xC3\xA4\xC3\xB6\xC3\xBC");
    EXPECT_EQ(ProfGetStringA(job, nullptr, "copy", again, 8, ""), 3);
    EXPECT_STREQ(again, value);
}
