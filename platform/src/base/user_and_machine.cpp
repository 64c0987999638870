#include <winbase.h>

#include "base/fail.h"
#include "base/text.h"

#include <algorithm>
#include <climits>
#include <vector>

#include <pwd.h>
#include <unistd.h>

using namespace qxplatform;

namespace
{

// As the system makes the short name of a machine: in upper case, without a domain, cut.
std::u16string MachineName()
{
    char host[HOST_NAME_MAX + 1] = {};
    gethostname(host, HOST_NAME_MAX);
    std::u16string name = ToWide(host);
    name.resize(std::min<size_t>({name.size(), name.find(u'.'), MAX_COMPUTERNAME_LENGTH}));
    std::transform(name.begin(), name.end(), name.begin(), UpperCase);
    return name;
}

// A user without an entry has a number at least.
std::u16string UserName()
{
    std::vector<char> buffer(4096);
    passwd entry{};
    passwd* found = nullptr;
    if (getpwuid_r(geteuid(), &entry, buffer.data(), buffer.size(), &found) == 0 && found != nullptr)
        return ToWide(found->pw_name);
    return ToWide(std::to_string(geteuid()));
}

} // namespace

BOOL WINAPI GetComputerNameW(LPWSTR lpBuffer, LPDWORD nSize)
{
    const std::u16string name = MachineName();
    const DWORD room = *nSize;
    *nSize = CopyOut(name, lpBuffer, room);
    return *nSize == name.size() || Fail(ERROR_BUFFER_OVERFLOW);
}

// Unlike the other one, this counts the terminator after a success too.
BOOL WINAPI GetUserNameW(LPWSTR lpBuffer, LPDWORD pcbBuffer)
{
    const std::u16string name = UserName();
    const bool fits = CopyOut(name, lpBuffer, *pcbBuffer) == name.size();
    *pcbBuffer = static_cast<DWORD>(name.size()) + 1;
    return fits || Fail(ERROR_INSUFFICIENT_BUFFER);
}
