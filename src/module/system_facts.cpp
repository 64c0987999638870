#include "module/system_facts.h"

#include "core/debug_line.h"

#include <wchar.h>

namespace qx
{
namespace
{

// Returns the build number from the system's settings, or 0.
DWORD ReadBuildNumber()
{
    wchar_t text[16] = {};
    DWORD size = sizeof(text) - sizeof(wchar_t);
    HKEY key = nullptr;
    constexpr const wchar_t* kPath = L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion";
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, kPath, 0, KEY_QUERY_VALUE, &key) != ERROR_SUCCESS)
        return 0;
    const LSTATUS status =
        RegQueryValueExW(key, L"CurrentBuildNumber", nullptr, nullptr, reinterpret_cast<BYTE*>(text), &size);
    RegCloseKey(key);
    return status == ERROR_SUCCESS ? static_cast<DWORD>(wcstoul(text, nullptr, 10)) : 0;
}

// Returns the system's version record. If the system call fails, the record is composed of the plain version number and
// the system's settings.
OSVERSIONINFOW ReadSystemRecord()
{
    OSVERSIONINFOW record{};
    record.dwOSVersionInfoSize = sizeof(record);
    if (GetVersionExW(&record))
        return record;
    const DWORD version = GetVersion();
    record.dwMajorVersion = version & 0xFF;
    record.dwMinorVersion = version >> 8 & 0xFF;
    record.dwBuildNumber = ReadBuildNumber();
    if (version == 0 || record.dwBuildNumber == 0)
        DebugLine(L"cannot get OS version info!");
    return record;
}

} // namespace

unsigned short GetSystemGeneration()
{
    static const unsigned short generation = []
    {
        const OSVERSIONINFOW record = ReadSystemRecord();
        return static_cast<unsigned short>((record.dwMajorVersion & 0xFF) << 8 | (record.dwMinorVersion & 0xFF));
    }();
    return generation;
}

DWORD SessionId()
{
    static const DWORD known = []
    {
        DWORD id = 0;
        const bool isRemote = GetSystemMetrics(SM_REMOTESESSION) != 0;
        return isRemote && ProcessIdToSessionId(GetCurrentProcessId(), &id) ? id : 0;
    }();
    return known;
}

} // namespace qx
