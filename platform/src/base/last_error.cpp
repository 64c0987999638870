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

UINT WINAPI SetErrorMode(UINT uMode)
{
    return errorMode.exchange(uMode);
}
