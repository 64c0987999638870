// Sums and tests of system times.
#pragma once

#include <windows.h>

#include <cstdint>

namespace qx
{

// What a time becomes that nothing can be made of.
inline constexpr SYSTEMTIME kNoTime{0, 0, 0xFFFF, 0, 0, 0, 0, 0};

// Carries over days, months and years, and sets the day of the week. kNoTime if either time isn't one of the system's.
void AddMinutes(SYSTEMTIME& time, std::int64_t minutes);

} // namespace qx
