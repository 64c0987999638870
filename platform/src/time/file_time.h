// System times: 100 ns units since 1601, in UTC.
#pragma once

#include <minwindef.h>

#include <chrono>
#include <ctime>

namespace qxplatform
{

inline constexpr LONGLONG kUnitsPerSecond = 10'000'000;

// The day from which file times are counted.
inline constexpr std::chrono::sys_days kFirstFileTimeDay{std::chrono::year{1601} / 1 / 1};

inline LONGLONG UnitsOf(const FILETIME& time)
{
    return static_cast<LONGLONG>(ULONGLONG{time.dwHighDateTime} << 32 | time.dwLowDateTime);
}

inline FILETIME FileTimeOfUnits(LONGLONG units)
{
    return {static_cast<DWORD>(units), static_cast<DWORD>(static_cast<ULONGLONG>(units) >> 32)};
}

FILETIME FileTimeOf(const timespec& time);
timespec TimeSpecOf(const FILETIME& time);

} // namespace qxplatform
