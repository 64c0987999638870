#include "processes.h"

#include <windows.h>

namespace qxut
{

unsigned long ProcessId()
{
    return GetCurrentProcessId();
}

bool IsProcessAlive(unsigned long id)
{
    const HANDLE process = OpenProcess(SYNCHRONIZE, FALSE, id);
    if (process == nullptr)
        return GetLastError() != ERROR_INVALID_PARAMETER;
    const bool isAlive = WaitForSingleObject(process, 0) == WAIT_TIMEOUT;
    CloseHandle(process);
    return isAlive;
}

std::string LibraryPath(std::string path)
{
    return path;
}

} // namespace qxut
