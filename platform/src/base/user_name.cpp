#include <winbase.h>

#include "base/fail.h"
#include "base/fork_gate.h"
#include "base/text.h"

#include <vector>

#include <pwd.h>
#include <unistd.h>

using namespace qxplatform;

namespace
{

// Returns the user's name, or the numeric id for a user without a passwd entry.
std::u16string UserName()
{
    const ForkHold hold; // no fork while the C library holds its own locks
    std::vector<char> buffer(4096);
    passwd entry{};
    passwd* found = nullptr;
    if (getpwuid_r(geteuid(), &entry, buffer.data(), buffer.size(), &found) == 0 && found != nullptr)
        return ToWide(found->pw_name);
    return ToWide(std::to_string(geteuid()));
}

} // namespace

// The returned size includes the terminator, even after success.
BOOL WINAPI GetUserNameW(LPWSTR lpBuffer, LPDWORD pcbBuffer)
{
    const std::u16string name = UserName();
    const bool fits = CopyOut(name, lpBuffer, *pcbBuffer) == name.size();
    *pcbBuffer = static_cast<DWORD>(name.size()) + 1;
    return fits || Fail(ERROR_INSUFFICIENT_BUFFER);
}
