#include <profileapi.h>
#include <sysinfoapi.h>
#include <timeapi.h>

#include <ctime>

namespace
{

constexpr LONGLONG kCounterFrequency = 10'000'000; // as on the system
constexpr long kNanosecondsPerTick = 1'000'000'000 / kCounterFrequency;

timespec Now(clockid_t clock)
{
    timespec time{};
    clock_gettime(clock, &time);
    return time;
}

} // namespace

// Includes the time during which the machine was suspended.
ULONGLONG WINAPI GetTickCount64(void)
{
    const timespec time = Now(CLOCK_BOOTTIME);
    return static_cast<ULONGLONG>(time.tv_sec) * 1000 + static_cast<ULONGLONG>(time.tv_nsec / 1'000'000);
}

DWORD WINAPI GetTickCount(void)
{
    return static_cast<DWORD>(GetTickCount64());
}

BOOL WINAPI QueryPerformanceCounter(LARGE_INTEGER* lpPerformanceCount)
{
    const timespec time = Now(CLOCK_MONOTONIC);
    lpPerformanceCount->QuadPart = time.tv_sec * kCounterFrequency + time.tv_nsec / kNanosecondsPerTick;
    return TRUE;
}

BOOL WINAPI QueryPerformanceFrequency(LARGE_INTEGER* lpFrequency)
{
    lpFrequency->QuadPart = kCounterFrequency;
    return TRUE;
}

// Sleeps always have the requested resolution, whatever the period.
MMRESULT WINAPI timeBeginPeriod(UINT uPeriod)
{
    return uPeriod == 0 ? TIMERR_NOCANDO : TIMERR_NOERROR;
}

MMRESULT WINAPI timeEndPeriod(UINT uPeriod)
{
    return uPeriod == 0 ? TIMERR_NOCANDO : TIMERR_NOERROR;
}
