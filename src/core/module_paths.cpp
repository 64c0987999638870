#include "core/module_paths.h"

#include "core/module.h"

#include <windows.h>

#include <algorithm>
#include <string_view>

namespace qx
{
namespace
{

String UpperCase(std::wstring_view text)
{
    String result(text.data(), 0, text.size());
    result.MakeUpper();
    return result;
}

ModulePaths AskPaths(HMODULE module)
{
    wchar_t buffer[MAX_PATH + 1] = {};
    const DWORD length = GetModuleFileNameW(module, buffer, MAX_PATH);
    const std::wstring_view path(buffer, std::min<std::size_t>(length, MAX_PATH));
    const std::size_t nameStart = path.find_last_of(L"\\/") + 1;
    const std::wstring_view file = path.substr(nameStart);
    return {UpperCase(path), UpperCase(file), UpperCase(file.substr(0, file.rfind(L'.'))),
        UpperCase(path.substr(0, nameStart))};
}

} // namespace

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
