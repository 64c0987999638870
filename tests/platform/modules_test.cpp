// Modules, their names and functions.
#include "system_support.h"

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

const auto nowhere = reinterpret_cast<HMODULE>(0x1230);

TEST(Modules, ProgramIsFoundByItsNameInAnyCase)
{
    const HMODULE program = GetModuleHandleW(nullptr);
    ASSERT_NE(program, nullptr);
    const Text path = NameOf(nullptr);
    EXPECT_TRUE(Exists(path));
    EXPECT_EQ(path, NameOf(program));
    for (const Text& name : {path, Upper(path), FileName(path), Upper(FileName(path))})
        EXPECT_EQ(GetModuleHandleW(name), program) << name.Narrow();

    WCHAR buffer[10] = {};
    EXPECT_EQ(GetModuleFileNameW(nullptr, buffer, 4), 4u) << "cut to the buffer";
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INSUFFICIENT_BUFFER});
    if (isLayer) // Wine leaves out the terminator
    {
        EXPECT_EQ(Text(buffer).Narrow(), path.Narrow().substr(0, 3));
    }
    EXPECT_EQ(ErrorOf([&] { return GetModuleFileNameW(nowhere, buffer, 10); }), DWORD{ERROR_MOD_NOT_FOUND});
}

TEST(Modules, FunctionsOfTheSystem)
{
    for (const wchar_t* const name : {L"kernel32", L"KERNEL32.DLL"})
    {
        const HMODULE kernel = LoadLibraryW(name);
        ASSERT_NE(kernel, nullptr);
        EXPECT_NE(GetProcAddress(kernel, "GetTickCount64"), nullptr);
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
    EXPECT_EQ(error(nowhere, "GetTickCount64"), DWORD{ERROR_MOD_NOT_FOUND});
}

// A library of the tests, in a folder that only SetDllDirectoryW names. Its static objects are made before its entry is
// called and destroyed after, so that the entry can use them.
TEST(Modules, LibraryOfTheSetFolder)
{
    const Text name = L"qxentry_probe";
    for (int time = 0; time < 2; ++time)
    {
        EXPECT_EQ(ErrorOf([&] { return LoadLibraryW(name) != nullptr; }), DWORD{ERROR_MOD_NOT_FOUND});
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
}

} // namespace
