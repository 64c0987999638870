// Local time and UTC, and the rules of time zones.
#pragma once

#include <windows.h>

#include <cstdint>

namespace qx
{

// For the present zone. 0, or E_INVALIDARG for a year of 0; a time that the system can't convert becomes all zeros.
std::int32_t ConvertLocalTimeToUTC(SYSTEMTIME& time);
std::int32_t ConvertUTCToLocalTime(SYSTEMTIME& time);

// The local time at which a rule of TIME_ZONE_INFORMATION applies in a year.
SYSTEMTIME ResolveZoneRule(const SYSTEMTIME& rule, std::uint32_t year);

// Of the present zone; all zeros if it has no daylight saving time.
void GetDSTStartAndEndInUTC(std::uint32_t year, SYSTEMTIME& start, SYSTEMTIME& end);

} // namespace qx
