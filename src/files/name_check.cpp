#include "files/name_check.h"

#include "core/forever.h"
#include "core/regex.h"
#include "core/string.h"

#include <windows.h>

#include <stdlib.h>

namespace qx
{

namespace
{

constexpr size_t kPartSize = 256;
constexpr size_t kNameSize = 260;
constexpr uint32_t kExtended = 0x80;

constexpr wchar_t kAllowedNames[] = L"^(?!  (?:\tCON|PRN|AUX|NUL|\tCOM[1-9]|LPT[1-9]  )  (?:\\.[^.]*)?  $)"
                                    L"[^<>:\"/\\|?*\\x00-\\x1F]*[^<>:\"/\\|?*\\x00-\\x1F\\ .]$";

} // namespace

// A component that doesn't fit the buffers comes out empty, and so is refused.
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

} // namespace qx
