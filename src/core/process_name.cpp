#include "core/process_name.h"

#include <windows.h>

#include <string_view>

namespace qx
{

String ProcessBaseName()
{
    wchar_t path[MAX_PATH] = {};
    const DWORD length = GetModuleFileNameW(nullptr, path, MAX_PATH);
    std::wstring_view name(path, length < MAX_PATH ? length : MAX_PATH - 1);
    name.remove_prefix(name.find_last_of(L"\\/") + 1);
    name = name.substr(0, name.rfind(L'.'));
    String result(name.data(), 0, name.size());
    result.MakeUpper();
    return result;
}

} // namespace qx
