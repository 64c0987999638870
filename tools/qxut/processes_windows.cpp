#include "processes.h"

#include <filesystem>

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

bool IsInUse(const std::string& path)
{
    const HANDLE file = CreateFileW(
        std::filesystem::u8path(path).c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return GetLastError() == ERROR_SHARING_VIOLATION;
    CloseHandle(file);
    return false;
}

std::string LibraryPath(std::string path)
{
    return path;
}

} // namespace qxut
