#include <errhandlingapi.h>

static thread_local DWORD lastError = 0;

DWORD WINAPI GetLastError(void)
{
    return lastError;
}

void WINAPI SetLastError(DWORD dwErrCode)
{
    lastError = dwErrCode;
}
