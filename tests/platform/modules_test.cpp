// Modules, their names and functions.
#include "system_support.h"

#include <gmock/gmock.h>

#include <cctype>

using namespace qxtest;

namespace
{

Text NameOf(HMODULE module)
{
    WCHAR path[1000] = {};
    EXPECT_NE(GetModuleFileNameW(module, path, 1000), 0u);
    return path;
}

Text Upper(const Text& text)
{
    std::string upper = text.Narrow();
    for (char& c : upper)
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return Text::Widen(upper);
}

Text FileName(const Text& path)
{
    const std::string narrow = path.Narrow();
    return Text::Widen(std::string_view(narrow).substr(narrow.find_last_of("/\\") + 1));
}

TEST(Modules, ProgramIsFoundByItsNameInAnyCase)
{
    const HMODULE program = GetModuleHandleW(nullptr);
    ASSERT_NE(program, nullptr);
    const Text path = NameOf(nullptr);
    EXPECT_TRUE(Exists(path));
    EXPECT_EQ(path, NameOf(program));
    EXPECT_EQ(GetModuleHandleW(path), program);
    EXPECT_EQ(GetModuleHandleW(Upper(path)), program);
    EXPECT_EQ(GetModuleHandleW(FileName(path)), program);
    EXPECT_EQ(GetModuleHandleW(Upper(FileName(path))), program);
}

TEST(Modules, FileNameIsCutToTheBuffer)
{
    const Text path = NameOf(nullptr);
    WCHAR buffer[10] = {};
    EXPECT_EQ(GetModuleFileNameW(nullptr, buffer, 4), 4u);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INSUFFICIENT_BUFFER});
    if (isLayer) // Wine leaves out the terminator
    {
        EXPECT_EQ(Text(buffer).Narrow(), path.Narrow().substr(0, 3));
    }
    EXPECT_EQ(ErrorOf([&] { return GetModuleFileNameW(nullptr, buffer, 0); }), DWORD{ERROR_INSUFFICIENT_BUFFER});
    const auto nowhere = reinterpret_cast<HMODULE>(0x1230);
    EXPECT_EQ(ErrorOf([&] { return GetModuleFileNameW(nowhere, buffer, 10); }), DWORD{ERROR_MOD_NOT_FOUND});
}

TEST(Modules, FunctionsOfTheSystem)
{
    for (const wchar_t* const name : {L"kernel32", L"KERNEL32.DLL", L"Kernel32.dll"})
    {
        const HMODULE kernel = LoadLibraryW(name);
        ASSERT_NE(kernel, nullptr);
        const auto ticks = reinterpret_cast<ULONGLONG(WINAPI*)()>(GetProcAddress(kernel, "GetTickCount64"));
        ASSERT_NE(ticks, nullptr);
        EXPECT_NEAR(static_cast<double>(ticks()), static_cast<double>(GetTickCount64()), 1000);
        EXPECT_TRUE(FreeLibrary(kernel));
        EXPECT_EQ(GetModuleHandleW(name), kernel);
    }
    const HMODULE kernel = GetModuleHandleW(L"kernel32");
    const auto error = [](HMODULE module, const char* name)
    {
        return ErrorOf([&] { return GetProcAddress(module, name) != nullptr; });
    };
    EXPECT_EQ(error(kernel, "NoSuchFunction"), DWORD{ERROR_PROC_NOT_FOUND});
    EXPECT_EQ(error(kernel, "printf"), DWORD{ERROR_PROC_NOT_FOUND}) << "of another library";
    EXPECT_EQ(error(kernel, reinterpret_cast<const char*>(ULONG_PTR{0xFFFF})), DWORD{ERROR_PROC_NOT_FOUND});
    EXPECT_EQ(error(reinterpret_cast<HMODULE>(0x1230), "GetTickCount64"), DWORD{ERROR_MOD_NOT_FOUND});
}

TEST(Modules, MissingLibraries)
{
    const Folder folder;
    MakeFile(folder / L"broken.dll", "this is no library");
    const auto error = [](const Text& name)
    {
        return ErrorOf([&] { return LoadLibraryW(name) != nullptr; });
    };
    EXPECT_EQ(error(L"qxnosuchlibrary"), DWORD{ERROR_MOD_NOT_FOUND});
    EXPECT_EQ(error(L""), DWORD{ERROR_MOD_NOT_FOUND});
    EXPECT_EQ(error(folder / L"missing.dll"), DWORD{ERROR_MOD_NOT_FOUND});
    EXPECT_EQ(error(folder / L"broken.dll"), DWORD{ERROR_BAD_EXE_FORMAT});
    EXPECT_EQ(ErrorOf([] { return GetModuleHandleW(L"qxnosuchlibrary") != nullptr; }), DWORD{ERROR_MOD_NOT_FOUND});
    EXPECT_EQ(ErrorOf([] { return FreeLibrary(nullptr); }), DWORD{ERROR_INVALID_HANDLE});
    EXPECT_EQ(ErrorOf([] { return FreeLibrary(reinterpret_cast<HMODULE>(0x1230)); }), DWORD{ERROR_MOD_NOT_FOUND});
}

// A library of the tests, in a folder that only SetDllDirectoryW names.
TEST(Modules, LibraryOfTheSetFolder)
{
    const Text name = L"qxplatform_probe";
    EXPECT_EQ(LoadLibraryW(name), nullptr);
    ASSERT_TRUE(SetDllDirectoryW(Text::Widen(QXUT_PROBE_FOLDER)));
    WCHAR buffer[1000] = {};
    EXPECT_EQ(GetDllDirectoryW(1000, buffer), std::string(QXUT_PROBE_FOLDER).size());
    EXPECT_EQ(Text(buffer), Text::Widen(QXUT_PROBE_FOLDER));

    const HMODULE library = LoadLibraryW(name);
    ASSERT_NE(library, nullptr) << GetLastError();
    EXPECT_EQ(LoadLibraryW(name), library);
    const auto answer = reinterpret_cast<int (*)()>(GetProcAddress(library, "QxProbeAnswer"));
    ASSERT_NE(answer, nullptr);
    EXPECT_EQ(answer(), 42);
    EXPECT_THAT(NameOf(library).Narrow(), testing::HasSubstr("qxplatform_probe"));
    EXPECT_EQ(GetModuleHandleW(name + L".dll"), library);
    HMODULE owner = nullptr;
    EXPECT_TRUE(
        GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
            reinterpret_cast<LPCWSTR>(answer), &owner));
    EXPECT_EQ(owner, library);

    EXPECT_TRUE(FreeLibrary(library));
    EXPECT_EQ(GetModuleHandleW(name), library) << "it was loaded twice";
    EXPECT_TRUE(FreeLibrary(library));
    EXPECT_EQ(GetModuleHandleW(name), nullptr);

    EXPECT_TRUE(SetDllDirectoryW(nullptr));
    EXPECT_EQ(GetDllDirectoryW(1000, buffer), 0u);
    EXPECT_EQ(LoadLibraryW(name), nullptr);
}

// Its static objects are made before and destroyed after, so that it can use them.
TEST(Modules, EntryOfALibraryIsCalledAmidItsStaticObjects)
{
    ASSERT_TRUE(SetDllDirectoryW(Text::Widen(QXUT_PROBE_FOLDER)));
    for (int time = 0; time < 2; ++time)
    {
        const HMODULE library = LoadLibraryW(L"qxentry_probe.dll");
        ASSERT_NE(library, nullptr) << GetLastError();
        const auto takeSteps = reinterpret_cast<void (*)(char*)>(GetProcAddress(library, "QxTakeSteps"));
        ASSERT_NE(takeSteps, nullptr);
        char steps[16] = {};
        takeSteps(steps);
        EXPECT_STREQ(steps, "cA");
        EXPECT_TRUE(FreeLibrary(library));
        EXPECT_STREQ(steps, "cADd");
    }
    EXPECT_TRUE(SetDllDirectoryW(nullptr));
}

} // namespace
