#include <errhandlingapi.h>

#include <atomic>

namespace
{

thread_local DWORD lastError = 0;
std::atomic<UINT> errorMode = 0;

} // namespace

DWORD WINAPI GetLastError(void)
{
    return lastError;
}

void WINAPI SetLastError(DWORD dwErrCode)
{
    lastError = dwErrCode;
}

// The layer shows no boxes of its own, so the mode is only kept for the callers that put it back.
UINT WINAPI SetErrorMode(UINT uMode)
{
    return errorMode.exchange(uMode);
}
