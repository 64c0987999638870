// Conversion between local time and UTC, and the rules of time zones.
#pragma once

#include <windows.h>

#include <cstdint>

namespace qx
{

// Convert in the current time zone. Return 0, or E_INVALIDARG if the year is 0. A time that the system can't convert
// becomes all zeros.
std::int32_t ConvertLocalTimeToUTC(SYSTEMTIME& time);
std::int32_t ConvertUTCToLocalTime(SYSTEMTIME& time);

// Returns the local time at which a rule of TIME_ZONE_INFORMATION takes effect in a year.
SYSTEMTIME ResolveZoneRule(const SYSTEMTIME& rule, std::uint32_t year);

// Stores the start and the end, in UTC, of daylight saving time in the current time zone, or all zeros if there is
// none.
void GetDSTStartAndEndInUTC(std::uint32_t year, SYSTEMTIME& start, SYSTEMTIME& end);

} // namespace qx
