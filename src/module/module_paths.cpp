#include "module/module_paths.h"

#include "core/system_values.h"

#include <windows.h>

#include <wchar.h>

#include <algorithm>

namespace qx
{
namespace
{

String UpperCase(std::wstring_view text)
{
    String result(text);
    result.MakeUpper();
    return result;
}

ModulePaths AskPaths(HMODULE module)
{
    wchar_t buffer[MAX_PATH + 1] = {};
    const DWORD length = GetModuleFileNameW(module, buffer, MAX_PATH);
    const std::wstring_view path(buffer, wcsnlen(buffer, length)); // a truncated path ends before `length`
    const std::wstring_view file = FileNameOf(path);
    return {UpperCase(path), UpperCase(file), UpperCase(file.substr(0, file.rfind(L'.'))),
        UpperCase(path.substr(0, path.size() - file.size()))};
}

} // namespace

String ModulePath(HMODULE module)
{
    constexpr DWORD kLongest = 0x8000;
    for (DWORD size = MAX_PATH;; size *= 2)
    {
        String path;
        const DWORD length = GetModuleFileNameW(module, path.GetBuffer(size), size);
        // The system truncates a path that doesn't fit.
        if (length < size || size >= kLongest)
        {
            path.ReleaseBuffer(std::min(length, size - 1));
            return path;
        }
    }
}

std::wstring_view FileNameOf(std::wstring_view path)
{
    return path.substr(path.find_last_of(L"\\/") + 1);
}

const ModulePaths& ProcessPaths()
{
    static const ModulePaths paths = AskPaths(nullptr);
    return paths;
}

const ModulePaths& LibraryPaths()
{
    static const ModulePaths paths = AskPaths(LibraryHandle());
    return paths;
}

} // namespace qx
