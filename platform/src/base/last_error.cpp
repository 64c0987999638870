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

// The layer shows no error boxes, so the mode is only stored for callers that restore it.
UINT WINAPI SetErrorMode(UINT uMode)
{
    return errorMode.exchange(uMode);
}
