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

// Only stores the mode, for callers that restore it, because the layer shows no error boxes.
UINT WINAPI SetErrorMode(UINT uMode)
{
    return errorMode.exchange(uMode);
}
