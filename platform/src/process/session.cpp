// The session of the process, which has no screen.

#include <processthreadsapi.h>
#include <winuser.h>

#include "base/fail.h"

#include <cerrno>
#include <csignal>
#include <cstring>

using namespace qxplatform;

namespace
{

// Its address serves as the handle of the window station.
char station;

} // namespace

int WINAPI GetSystemMetrics(int)
{
    return 0;
}

BOOL WINAPI ProcessIdToSessionId(DWORD dwProcessId, DWORD* pSessionId)
{
    const auto process = static_cast<pid_t>(dwProcessId);
    if (process <= 0 || pSessionId == nullptr || (kill(process, 0) != 0 && errno == ESRCH))
        return Fail(ERROR_INVALID_PARAMETER);
    *pSessionId = 0;
    return TRUE;
}

HWINSTA WINAPI GetProcessWindowStation(void)
{
    return reinterpret_cast<HWINSTA>(&station);
}

BOOL WINAPI GetUserObjectInformationW(HANDLE hObj, int nIndex, PVOID pvInfo, DWORD nLength, LPDWORD lpnLengthNeeded)
{
    if (hObj != &station)
        return Fail(ERROR_INVALID_HANDLE);
    if (nIndex != UOI_FLAGS)
        return Fail(ERROR_NOT_SUPPORTED);
    const USEROBJECTFLAGS flags = {}; // without WSF_VISIBLE, because there is no screen
    if (lpnLengthNeeded != nullptr)
        *lpnLengthNeeded = sizeof flags;
    if (pvInfo == nullptr || nLength < sizeof flags)
        return Fail(ERROR_INSUFFICIENT_BUFFER);
    std::memcpy(pvInfo, &flags, sizeof flags);
    return TRUE;
}
