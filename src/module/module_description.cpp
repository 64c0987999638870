#include "module/module_description.h"

#include "module/module_image.h"
#include "module/module_paths.h"
#include "module/version_block.h"

#include <wchar.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <vector>

namespace qx
{
namespace
{

// Modules of this company show their link time if they specify no build.
constexpr const wchar_t* kOwnCompany = L"trelmo ";
constexpr int kOwnCompanyLength = 7;

constexpr WORD kVersionName = 1;

String UpperFileName(std::wstring_view path)
{
    String name(FileNameOf(path));
    name.LCMapString(LCMAP_LINGUISTIC_CASING | LCMAP_UPPERCASE, LOCALE_USER_DEFAULT);
    return name;
}

FILETIME FileTimeOf(std::uint32_t secondsSince1970)
{
    constexpr std::uint64_t kSecondsFrom1601To1970 = 11'644'473'600;
    const std::uint64_t units = (kSecondsFrom1601To1970 + secondsSince1970) * 10'000'000;
    return {static_cast<DWORD>(units), static_cast<DWORD>(units >> 32)};
}

String LinkTimeText(std::uint32_t secondsSince1970)
{
    const FILETIME fileTime = FileTimeOf(secondsSince1970);
    SYSTEMTIME universal = {};
    SYSTEMTIME local = {};
    if (!FileTimeToSystemTime(&fileTime, &universal) || !SystemTimeToTzSpecificLocalTime(nullptr, &universal, &local))
        return String();
    std::tm parts = {};
    parts.tm_year = local.wYear - 1900;
    parts.tm_mon = local.wMonth - 1;
    parts.tm_mday = local.wDay;
    parts.tm_hour = local.wHour;
    parts.tm_min = local.wMinute;
    wchar_t text[32] = {};
    wcsftime(text, 32, L"(%y-%m-%d %H:%M)", &parts);
    return text;
}

void WriteToOutput(const String& line)
{
    std::fputs(line.NarrowText(), stdout);
}

// Enumerates the version resources of a module through the system.
class VersionWalk
{
public:
    explicit VersionWalk(HMODULE module) : _module(module) {}

    // Returns the description from the last block that the system enumerates.
    String Run()
    {
        if (!EnumResourceTypesW(_module, OnType, reinterpret_cast<LONG_PTR>(this)))
            WriteToOutput(String(String::kFormatted, L"** EnumResourceTypes: ERROR %s\n",
                String::SystemErrorText(GetLastError()).Text()));
        return _text;
    }

private:
    static BOOL CALLBACK OnType(HMODULE module, LPWSTR type, LONG_PTR walk)
    {
        if (type == RT_VERSION)
            EnumResourceNamesW(module, type, OnName, walk);
        return TRUE;
    }

    static BOOL CALLBACK OnName(HMODULE module, LPCWSTR type, LPWSTR name, LONG_PTR walk)
    {
        if (name == MAKEINTRESOURCEW(kVersionName))
            EnumResourceLanguagesW(module, type, name, OnLanguage, walk);
        return TRUE;
    }

    static BOOL CALLBACK OnLanguage(HMODULE module, LPCWSTR type, LPCWSTR name, WORD language, LONG_PTR walk)
    {
        const HRSRC found = FindResourceExW(module, type, name, language);
        if (found)
            reinterpret_cast<VersionWalk*>(walk)->Describe(found);
        else
            WriteToOutput(L"ERROR finding resource... this cannot happen!\n");
        return TRUE;
    }

    void Describe(HRSRC found)
    {
        const HGLOBAL loaded = LoadResource(_module, found);
        const auto* const bytes = loaded ? static_cast<const std::byte*>(LockResource(loaded)) : nullptr;
        const std::size_t size = SizeofResource(_module, found);
        std::uint16_t told = 0;
        if (!bytes || size < sizeof told)
            return;
        // Readers of the block rely on the length in its first word, so reject a length that exceeds the resource.
        std::memcpy(&told, bytes, sizeof told);
        if (told > size)
            return;
        // Make a copy, because some systems write to the block when they look for a text and the one in the module is
        // read-only. It has twice the size, like the blocks that are read from files.
        std::vector<std::byte> block(2 * size);
        std::copy_n(bytes, size, block.begin());
        _text = DescribeVersionBlock(_module, block.data());
    }

    HMODULE _module;
    String _text;
};

} // namespace

String DescribeVersionBlock(HMODULE module, const void* block)
{
    const clsVersionTexts texts(block);
    const String version = texts.Get(L"FileVersion");
    if (version.IsEmpty())
        return String();
    String text = UpperFileName(ModulePath(module).View()) + L" " + version;
    const String build = texts.Get(L"Build");
    if (!build.IsEmpty())
        return text + L" " + build;
    const std::uint32_t linked = LinkTimeOf(module);
    if (linked != 0 && texts.Get(L"CompanyName").Compare(kOwnCompany, kOwnCompanyLength) == 0)
        text += L" " + LinkTimeText(linked);
    return text;
}

String GetModuleDescription(HMODULE module)
{
    if (module == nullptr)
        return String();
    const void* const block = FindVersionBlock(module);
    String text = block ? DescribeVersionBlock(module, block) : String();
    if (text.IsEmpty())
        text = VersionWalk(module).Run();
    if (text.IsEmpty())
        text = UpperFileName(LibraryPaths().file.View()) + L" " + L" <no version info>";
    return text;
}

std::unique_ptr<wchar_t[]> GetNamedModuleDescription(const wchar_t* fileName)
{
    const HMODULE module = GetModuleHandleW(fileName);
    const String text = module ? GetModuleDescription(module)
                               : String(FileNameOf(fileName ? fileName : L"")) + L" " + GetFileVersionText(fileName);
    auto result = std::make_unique<wchar_t[]>(text.Length() + 1);
    std::copy_n(text.Text(), text.Length(), result.get());
    return result;
}

} // namespace qx
