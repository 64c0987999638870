#include "module/late_libraries.h"

#include "core/system_values.h"
#include "support/debug_lines.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

using namespace qx;
using qxtest::DebugLines;

namespace
{

std::vector<std::string> askedNames;
const char* answeredName = "";

FARPROC WINAPI FakeGetProcAddress(HMODULE, LPCSTR name)
{
    askedNames.emplace_back(name);
    return std::string(name) == answeredName ? reinterpret_cast<FARPROC>(1) : nullptr;
}

// A library that counts as loaded under any name, or that loads by name and counts the attempts.
class Library : public CLateLoadBase
{
public:
    explicit Library(const wchar_t* name, std::size_t skipped = 0) : CLateLoadBase(name, skipped) {}

    bool Load() override
    {
        ++loads;
        return CLateLoadBase::Load();
    }

    void PretendToBeLoaded()
    {
        _module = GetModuleHandleW(nullptr);
        _freeOnDestruction = 0;
        _getProcAddress = FakeGetProcAddress;
        askedNames.clear();
    }

    int loads = 0;
};

LateState StateAfterAsking(Library& library, const wchar_t* name, int argumentBytes = 0)
{
    std::atomic<LateState> state = LateState::Unasked;
    library.Resolve(name, state, argumentBytes);
    return state;
}

constexpr wchar_t kSiblingFolder[] = L"" QXUT_SIBLING_FOLDER;

class Siblings : public testing::Test
{
protected:
    ~Siblings() override
    {
        SetDllDirectoryW(L"");
        SetLibraryHandle(nullptr);
    }
};

class SiblingOfAnyVersion : public CSiblingLibrary
{
public:
    SiblingOfAnyVersion() : CSiblingLibrary(L"TRLMCTL", L"ct") {}
    using CSiblingLibrary::LoadVersioned;
};

} // namespace

TEST(LateLoad, NamesAreTriedInTheirOrderUpToTheFirstThatIsThere)
{
    const std::tuple<const wchar_t*, std::size_t, const wchar_t*, const char*, std::vector<std::string>> cases[] = {
        {L"kernel32", 0, L"Foo", "none", {"Foo", "FooW", "_Foo@12", "_FooW@12"}},
        {L"kernel32", 0, L"p_Foo", "FooW", {"Foo", "FooW"}},
        {L"kernel32", 2, L"p_QxFoo", "none", {"Foo", "FooW", "_Foo@12", "_FooW@12"}},
        {L"SHELL32", 0, L"p_Foo", "none", {"FooW", "Foo", "_Foo@12", "_FooW@12"}},
        {L"kernel32", 9, L"Foo", "none", {"", "W", "_@12", "_W@12"}}};
    for (const auto& [module, skipped, name, answered, asked] : cases)
    {
        Library library(module, skipped);
        library.PretendToBeLoaded();
        answeredName = answered;
        const bool isThere = std::string(answered) != "none";
        EXPECT_EQ(StateAfterAsking(library, name, 12), isThere ? LateState::Valid : LateState::Missing);
        EXPECT_EQ(askedNames, asked);
    }
}

TEST(LateLoad, AnswersAreKeptAndFailuresLoggedOnRequest)
{
    const DebugLines lines;
    EXPECT_FALSE(Library(L"qx-no-such-library").Load());
    EXPECT_EQ(lines.Count(), 0u);
    SetLateLoadLog(true);
    Library library(L"qx-no-such-library");
    EXPECT_EQ(StateAfterAsking(library, L"p_Foo"), LateState::Unasked);
    EXPECT_EQ(StateAfterAsking(library, L"p_Bar"), LateState::Unasked);
    EXPECT_EQ(library.loads, 1);
    EXPECT_NE(library.LastLoadError(), 0u);
    EXPECT_FALSE(library.EnsureLoaded(L"kernel32", false));
    SetLateLoadLog(false);

    Library loaded(L"kernel32");
    LateProcedure missing(loaded, L"p_QxNoSuchFunction");
    EXPECT_EQ(missing.State(), LateState::Unasked);
    for (int time = 0; time < 2; ++time)
        EXPECT_FALSE(missing.IsThere());
    EXPECT_EQ(missing.State(), LateState::Missing);
    EXPECT_EQ(loaded.loads, 1);

    Library later(L""); // receives its name later
    EXPECT_FALSE(later.EnsureLoaded(L"kernel32", false));
    EXPECT_TRUE(later.EnsureLoaded(L"another", true));
    EXPECT_EQ(later.Module(), GetModuleHandleW(L"kernel32"));
    EXPECT_EQ(String::Find(lines.Only(), L"WRN: module 'qx-no-such-library' could not be loaded: "), 0);
}

TEST(LateLoad, LibrariesOfLaterSystemsMayBeMissing)
{
    const std::tuple<const wchar_t*, unsigned short, unsigned short, bool> cases[] = {{L"DWMAPI", 0x0502, 0x0A00, true},
        {L"dwmapi", 0x0600, 0x0502, false}, {L"ShCore", 0x0A00, 0x0602, true}, {L"shcore", 0x0502, 0x0603, false},
        {L"gdi32", 0x0400, 0x0400, false}};
    for (const auto& [name, version, generation, expected] : cases)
        EXPECT_EQ(IsExpectedToBeMissing(name, version, generation), expected) << version;
}

TEST_F(Siblings, TheFolderThatIsSetAndTheCopyThatIsThere)
{
    clsTrlmCTL missing;
    EXPECT_FALSE(missing.Load());
    EXPECT_NE(missing.LastLoadError(), 0u);

    SetSiblingVersion(0);
    SetDllDirectoryW(kSiblingFolder);
    clsTrlmCTL library;
    ASSERT_TRUE(library.Load());
    EXPECT_EQ(library.FoundVersion(), 23);
    EXPECT_EQ(SiblingVersion(), 23);
    EXPECT_EQ(library.p_CtlJobOpenEx.State(), LateState::Valid);
    EXPECT_FALSE(library.p_CtlAbortDlgStart.IsThere());

    SetDllDirectoryW(L"");
    SiblingOfAnyVersion second;
    int found = 0;
    EXPECT_TRUE(second.LoadVersioned(L"ct", 25, 23, found));
    EXPECT_EQ(found, 23);
    EXPECT_EQ(second.Module(), library.Module());

    clsCTL adopted(library.Module()), none(nullptr);
    ASSERT_TRUE(adopted.p_CtlXlatPath.IsThere());
    EXPECT_EQ(adopted.p_CtlXlatPath.Address(), GetProcAddress(library.Module(), "CtlXlatPath"));
    EXPECT_FALSE(none.EnsureLoaded(L"kernel32", true));
    EXPECT_FALSE(none.p_CtlXlatPath.IsThere());
    EXPECT_EQ(none.p_CtlXlatPath.State(), LateState::Unasked);
}

TEST_F(Siblings, TheLibrarysOwnFolderComesLastAndThenTheOldOneIsBack)
{
    SetDllDirectoryW(kSiblingFolder);
    const HMODULE host = LoadLibraryW(L"qxmodule_host.dll");
    ASSERT_NE(host, nullptr);
    constexpr wchar_t kBefore[] = L"" QXUT_SIBLING_FOLDER "/none";
    SetDllDirectoryW(kBefore);
    SetLibraryHandle(host);
    {
        SiblingOfAnyVersion library;
        int found = 0;
        // The last attempt uses the version known to be compatible, even if it wasn't requested.
        EXPECT_FALSE(library.LoadVersioned(L"no", 25, 24, found));
    }
    clsTrlmCTL library;
    EXPECT_TRUE(library.Load());
    wchar_t after[MAX_PATH + 1] = {};
    GetDllDirectoryW(MAX_PATH, after);
    EXPECT_STREQ(after, kBefore);
    FreeLibrary(host);
}
