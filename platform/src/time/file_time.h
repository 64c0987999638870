// Times of the system: 100 ns units since the year 1601, in UTC.
#pragma once

#include <minwindef.h>

#include <ctime>

namespace qxplatform
{

inline constexpr LONGLONG unitsPerSecond = 10'000'000;

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
