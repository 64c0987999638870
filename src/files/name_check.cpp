#include "files/name_check.h"

#include "core/forever.h"
#include "core/pattern/regex.h"
#include "core/text/string.h"

#include <windows.h>

#include <stdlib.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <string_view>

namespace qx
{

namespace
{

constexpr std::size_t kPartSize = 256;
constexpr std::size_t kNameSize = 260;
constexpr std::uint32_t kExtended = 0x80;

constexpr wchar_t kAllowedNames[] = L"^(?!  (?:\tCON|PRN|AUX|NUL|\tCOM[1-9]|LPT[1-9]  )  (?:\\.[^.]*)?  $)"
                                    L"[^<>:\"/\\|?*\\x00-\\x1F]*[^<>:\"/\\|?*\\x00-\\x1F\\ .]$";

} // namespace

// A component that doesn't fit the buffers becomes empty and is rejected.
bool IsFileNameAllowed(const String& path)
{
    wchar_t name[kPartSize] = {};
    wchar_t extension[kPartSize] = {};
    wchar_t component[kNameSize] = {};
    if (_wsplitpath_s(path.Text(), nullptr, 0, nullptr, 0, name, kPartSize, extension, kPartSize) != 0 ||
        _wmakepath_s(component, kNameSize, nullptr, nullptr, name, extension) != 0)
    {
        return false;
    }
    static clsRegEx& allowed = MakeForever<clsRegEx>(kAllowedNames, kExtended);
    return allowed.Match(component, nullptr);
}

bool IsDeviceName(const String& name)
{
    constexpr std::wstring_view kDevices[] = {L"CON", L"PRN", L"AUX", L"NUL", L"CONIN$", L"CONOUT$"};
    constexpr std::wstring_view kNumbers = L"123456789\xB9\xB2\xB3";
    std::wstring_view stem = name.View().substr(0, name.View().find(L'.'));
    stem = stem.substr(0, stem.find_last_not_of(L' ') + 1);
    const String upper = String(stem).Upper();
    const std::wstring_view device = upper.View();
    const bool isNumbered = device.size() == 4 && kNumbers.find(device[3]) != std::wstring_view::npos;
    return isNumbered ? device.starts_with(L"COM") || device.starts_with(L"LPT")
                      : std::find(std::begin(kDevices), std::end(kDevices), device) != std::end(kDevices);
}

} // namespace qx
