// Environment, times, pointer tests; modules with their names and functions.
#include "system_support.h"

#include <cstdlib>
#include <cstring>

using namespace qxtest;

namespace
{

TEST(Environment, NamesAndSizes)
{
    EXPECT_TRUE(SetEnvironmentVariableW(L"QxTestVar", L"abc"));
    WCHAR buffer[10] = L"#";
    EXPECT_EQ(GetEnvironmentVariableW(L"QXTESTVAR", nullptr, 0), 4u);
    EXPECT_EQ(GetEnvironmentVariableW(L"QxTestVar", buffer, 3), 4u);
    EXPECT_EQ(GetEnvironmentVariableW(L"QxTestVar", buffer, 4), 3u);
    EXPECT_EQ(ExpandEnvironmentStringsW(L"<%QxTestVar%>", buffer, 5), 6u);
    EXPECT_EQ(ExpandEnvironmentStringsW(L"<%QxTestVar%>", buffer, 6), 6u);
    EXPECT_EQ(Text(buffer), Text(L"<abc>"));
    EXPECT_TRUE(SetEnvironmentVariableW(L"QXTESTVAR", nullptr));
    EXPECT_ERROR(ERROR_ENVVAR_NOT_FOUND, GetEnvironmentVariableW(L"QxTestVar", buffer, 10));
}

TEST(Times, FileTimeAndCalendar)
{
    constexpr std::pair<ULONGLONG, SYSTEMTIME> kCases[] = {{0, {1601, 1, 1, 1, 0, 0, 0, 0}},
        {94405824000000000, {1900, 3, 4, 1, 0, 0, 0, 0}}, {125962991990000000, {2000, 2, 2, 29, 11, 59, 59, 0}},
        {133485407999990000, {2023, 12, 0, 31, 23, 59, 59, 999}},
        {2650467743999990000, {9999, 12, 5, 31, 23, 59, 59, 999}}};
    for (const auto& [units, time] : kCases)
    {
        const FILETIME fileTime{static_cast<DWORD>(units), static_cast<DWORD>(units >> 32)};
        SYSTEMTIME split{};
        FILETIME back{};
        EXPECT_TRUE(FileTimeToSystemTime(&fileTime, &split));
        EXPECT_TRUE(SystemTimeToFileTime(&split, &back));
        EXPECT_EQ(std::memcmp(&back, &fileTime, sizeof back), 0) << units;
        EXPECT_EQ(std::memcmp(&split, &time, sizeof time), 0) << units;
    }
    for (const SYSTEMTIME time :
        {SYSTEMTIME{2023, 2, 0, 30}, SYSTEMTIME{1600, 12, 0, 31}, SYSTEMTIME{2023, 0, 0, 1}, SYSTEMTIME{2023, 13, 0, 1},
            SYSTEMTIME{2023, 1, 0, 0}, SYSTEMTIME{2023, 1, 0, 1, 24}, SYSTEMTIME{2023, 1, 0, 1, 0, 60},
            SYSTEMTIME{2023, 1, 0, 1, 0, 0, 60}, SYSTEMTIME{2023, 1, 0, 1, 0, 0, 0, 1000}})
    {
        FILETIME fileTime;
        EXPECT_ERROR(ERROR_INVALID_PARAMETER, SystemTimeToFileTime(&time, &fileTime))
            << time.wYear << '-' << time.wMonth << '-' << time.wDay;
    }
    const FILETIME tooLate{0, 0x80000000};
    SYSTEMTIME split;
    EXPECT_ERROR(ERROR_INVALID_PARAMETER, FileTimeToSystemTime(&tooLate, &split));
}

TEST(PointerTests, PagesTheirEndsAndOddAddresses)
{
    EXPECT_FALSE(IsBadStringPtrW(L"text", 100));
    for (const UINT_PTR bad : {UINT_PTR{0}, UINT_PTR{8}, UINT_PTR{0xFFFF800000000000}, ~UINT_PTR{0}})
        EXPECT_TRUE(IsBadStringPtrW(reinterpret_cast<LPCWSTR>(bad), 1)) << bad;
}

Text NameOf(HMODULE module)
{
    WCHAR path[1000] = {};
    EXPECT_NE(GetModuleFileNameW(module, path, 1000), 0u);
    return path;
}

Text FileName(const Text& path)
{
    const std::string narrow = path.Narrow();
    return Text::Widen(std::string_view(narrow).substr(narrow.find_last_of("/\\") + 1));
}

const auto nowhere = reinterpret_cast<HMODULE>(0x1230);

TEST(Modules, ProgramIsFoundByItsName)
{
    const HMODULE program = GetModuleHandleW(nullptr);
    ASSERT_NE(program, nullptr);
    const Text path = NameOf(nullptr);
    EXPECT_TRUE(Exists(path));
    EXPECT_EQ(path, NameOf(program));
    for (const Text& name : {path, FileName(path)})
        EXPECT_EQ(GetModuleHandleW(name), program) << name.Narrow();

    WCHAR buffer[10] = {};
    EXPECT_EQ(GetModuleFileNameW(nullptr, buffer, 4), 4u) << "cut to the buffer";
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INSUFFICIENT_BUFFER});
    if (kIsLayer) // Wine omits the terminator
    {
        EXPECT_EQ(Text(buffer).Narrow(), path.Narrow().substr(0, 3));
    }
    EXPECT_ERROR(ERROR_MOD_NOT_FOUND, GetModuleFileNameW(nowhere, buffer, 10));
}

TEST(Modules, FunctionsOfTheSystem)
{
    const HMODULE kernel = LoadLibraryW(L"kernel32");
    ASSERT_NE(kernel, nullptr);
    EXPECT_TRUE(FreeLibrary(kernel));
    EXPECT_EQ(GetModuleHandleW(L"KERNEL32.DLL"), kernel);
    EXPECT_NE(GetProcAddress(kernel, "GetTickCount64"), nullptr);
    EXPECT_ERROR(ERROR_PROC_NOT_FOUND, GetProcAddress(kernel, "NoSuchFunction"));
    EXPECT_ERROR(ERROR_PROC_NOT_FOUND, GetProcAddress(kernel, "printf")) << "of another library";
    EXPECT_ERROR(ERROR_MOD_NOT_FOUND, GetProcAddress(nowhere, "GetTickCount64"));
}

// A test library in a folder that only SetDllDirectoryW names. Its static objects must be constructed before its
// DllMain is called and destroyed afterwards, so that DllMain can use them.
TEST(Modules, LibraryOfTheSetFolder)
{
    const Text name = L"qxentry_probe";
    for (int time = 0; time < 2; ++time)
    {
        EXPECT_ERROR(ERROR_MOD_NOT_FOUND, LoadLibraryW(name) != nullptr);
        ASSERT_TRUE(SetDllDirectoryW(Text::Widen(QXUT_PROBE_FOLDER)));
        const HMODULE library = LoadLibraryW(name);
        ASSERT_NE(library, nullptr) << GetLastError();
        EXPECT_EQ(LoadLibraryW(name), library);
        EXPECT_EQ(GetModuleHandleW(name + L".dll"), library);
        const auto takeSteps = reinterpret_cast<void (*)(char*)>(GetProcAddress(library, "QxTakeSteps"));
        ASSERT_NE(takeSteps, nullptr);
        char steps[16] = {};
        takeSteps(steps);
        EXPECT_STREQ(steps, "cA");
        EXPECT_TRUE(FreeLibrary(library));
        EXPECT_EQ(GetModuleHandleW(name), library) << "it was loaded twice";
        EXPECT_TRUE(FreeLibrary(library));
        EXPECT_EQ(GetModuleHandleW(name), nullptr);
        EXPECT_STREQ(steps, "cADd");
        EXPECT_TRUE(SetDllDirectoryW(nullptr));
    }
    const auto endLoaded = [&name]
    {
        SetDllDirectoryW(Text::Widen(QXUT_PROBE_FOLDER));
        LoadLibraryW(name);
        std::exit(3);
    };
    EXPECT_EXIT(endLoaded(), testing::ExitedWithCode(3), "cAD, and the process ends");
}

} // namespace
