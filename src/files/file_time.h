// Converts file times to integers and back.
#pragma once

#include <windows.h>

#include <cstdint>

namespace qx
{

// File times count units of 100 ns.
constexpr std::uint64_t kUnitsPerMillisecond = 10'000;
constexpr std::uint64_t kUnitsPerSecond = 1000 * kUnitsPerMillisecond;
constexpr std::uint64_t kUnitsPerHour = 3600 * kUnitsPerSecond;

inline std::uint64_t UnitsOf(const FILETIME& time)
{
    return static_cast<std::uint64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime;
}

inline FILETIME FileTimeOf(std::uint64_t units)
{
    return {static_cast<DWORD>(units), static_cast<DWORD>(units >> 32)};
}

} // namespace qx
