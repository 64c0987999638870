// Arithmetic on system times.
#pragma once

#include <windows.h>

#include <cstdint>

namespace qx
{

// The result for times that can't be converted.
inline constexpr SYSTEMTIME kNoTime{0, 0, 0xFFFF, 0, 0, 0, 0, 0};

// Adds minutes with carry into days, months and years, and sets the day of the week. Sets the time to kNoTime if the
// time or the result is out of the system's range.
void AddMinutes(SYSTEMTIME& time, std::int64_t minutes);

} // namespace qx
