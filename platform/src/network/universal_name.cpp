#include <winnetwk.h>

#include "base/fail.h"
#include "base/text.h"
#include "network/connections.h"

#include <algorithm>
#include <cstring>

using namespace qxplatform;

namespace
{

bool IsDrivePath(std::u16string_view path)
{
    if (path.size() < 2 || path[1] != u':')
        return false;
    const char16_t letter = path[0] | 0x20;
    return letter >= u'a' && letter <= u'z';
}

// Drives have no current folder, so `Q:name` is `Q:\name`.
std::u16string UniversalName(const Connection& connection, std::u16string_view rest)
{
    std::u16string name = connection.share;
    if (!rest.empty() && rest[0] != u'\\' && rest[0] != u'/')
        name += u'\\';
    name += rest;
    std::replace(name.begin(), name.end(), u'/', u'\\');
    return name;
}

} // namespace

DWORD WINAPI WNetGetUniversalNameW(LPCWSTR lpLocalPath, DWORD dwInfoLevel, LPVOID lpBuffer, LPDWORD lpBufferSize)
{
    if (lpLocalPath == nullptr || lpBufferSize == nullptr)
        return ERROR_INVALID_PARAMETER;
    if (dwInfoLevel != UNIVERSAL_NAME_INFO_LEVEL)
        return ERROR_INVALID_LEVEL;
    const std::u16string_view path = View(lpLocalPath);
    if (!IsDrivePath(path))
        return ERROR_BAD_DEVICE;
    const std::optional<Connection> connection = ConnectionOf(path[0]);
    if (!connection)
        return ERROR_NOT_CONNECTED;
    const std::u16string name = UniversalName(*connection, path.substr(2));
    const std::size_t needed = sizeof(UNIVERSAL_NAME_INFOW) + SizeOfText(name);
    if (needed > *lpBufferSize)
    {
        *lpBufferSize = static_cast<DWORD>(needed);
        return ERROR_MORE_DATA;
    }
    if (lpBuffer == nullptr)
        return ERROR_INVALID_PARAMETER;
    BYTE* text = static_cast<BYTE*>(lpBuffer) + sizeof(UNIVERSAL_NAME_INFOW);
    const UNIVERSAL_NAME_INFOW info{PutText(text, name)};
    std::memcpy(lpBuffer, &info, sizeof info);
    return ERROR_SUCCESS;
}
