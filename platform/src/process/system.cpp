#include <debugapi.h>
#include <sysinfoapi.h>

#include "base/environment.h"
#include "base/fail.h"
#include "base/forever.h"
#include "base/text.h"

#include <csignal>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <string>

#include <unistd.h>

using namespace qxplatform;

namespace
{

// The layer behaves like Windows 10, 22H2, and reports this version.
constexpr DWORD kMajorVersion = 10;
constexpr DWORD kMinorVersion = 0;
constexpr DWORD kBuildNumber = 19045;

} // namespace

DWORD WINAPI GetVersion(void)
{
    return kBuildNumber << 16 | kMinorVersion << 8 | kMajorVersion;
}

BOOL WINAPI GetVersionExW(LPOSVERSIONINFOW lpVersionInformation)
{
    const DWORD size = lpVersionInformation->dwOSVersionInfoSize;
    if (size != sizeof(OSVERSIONINFOW) && size != sizeof(OSVERSIONINFOEXW))
        return Fail(ERROR_INSUFFICIENT_BUFFER);
    OSVERSIONINFOEXW info{};
    info.dwOSVersionInfoSize = size;
    info.dwMajorVersion = kMajorVersion;
    info.dwMinorVersion = kMinorVersion;
    info.dwBuildNumber = kBuildNumber;
    info.dwPlatformId = VER_PLATFORM_WIN32_NT;
    info.wProductType = VER_NT_WORKSTATION;
    std::memcpy(lpVersionInformation, &info, size);
    return TRUE;
}

void WINAPI GetSystemInfo(LPSYSTEM_INFO lpSystemInfo)
{
    const long processors = sysconf(_SC_NPROCESSORS_ONLN);
    SYSTEM_INFO info{};
#if defined(__aarch64__)
    info.wProcessorArchitecture = PROCESSOR_ARCHITECTURE_ARM64;
#else
    info.wProcessorArchitecture = PROCESSOR_ARCHITECTURE_AMD64;
#endif
    info.dwPageSize = static_cast<DWORD>(sysconf(_SC_PAGESIZE));
    info.lpMinimumApplicationAddress = reinterpret_cast<LPVOID>(0x10000);
    info.lpMaximumApplicationAddress = reinterpret_cast<LPVOID>(0x7FFFFFFEFFFF);
    info.dwNumberOfProcessors = processors < 1 ? 1 : static_cast<DWORD>(processors);
    info.dwActiveProcessorMask =
        info.dwNumberOfProcessors >= 64 ? ~DWORD_PTR{0} : (DWORD_PTR{1} << info.dwNumberOfProcessors) - 1;
    info.dwAllocationGranularity = 0x10000;
    *lpSystemInfo = info;
}

BOOL WINAPI IsDebuggerPresent(void)
{
    constexpr std::string_view kLabel = "TracerPid:";
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.compare(0, kLabel.size(), kLabel) == 0)
            return line.find_first_of("123456789", kLabel.size()) != line.npos;
    return FALSE;
}

void WINAPI DebugBreak(void)
{
    raise(SIGTRAP);
}

// Debuggers on Linux don't receive these texts. They are written to standard error if QXPLATFORM_DEBUGSTRINGS is set.
void WINAPI OutputDebugStringW(LPCWSTR lpOutputString)
{
    static constinit Forever<bool> isWanted;
    if (isWanted.Get([] { return !EnvironmentValue("QXPLATFORM_DEBUGSTRINGS").empty(); }) && lpOutputString != nullptr)
        std::fputs(ToBytes(View(lpOutputString)).c_str(), stderr);
}
