// The system's representation of a time zone: a bias, and the two days of a year on which the clocks change.
#pragma once

#include <minwindef.h>
#include <timezoneapi.h>

#include <ctime>

namespace qxplatform
{

// Stores the zone's information for the year of a moment. Returns true if daylight saving time is in effect then, as
// far as the representation can express it: with two changes in the year.
bool ZoneInformationAt(time_t universal, TIME_ZONE_INFORMATION& zone);

bool HasDaylightTime(const TIME_ZONE_INFORMATION& zone);

// Returns true if the rules are valid: months, weeks, weekdays and times within bounds.
bool IsValidZone(const TIME_ZONE_INFORMATION& zone);

// Return the minutes to add to local time to get UTC, for a time of the given kind in units of 100 ns since 1601.
LONG BiasAtUniversal(const TIME_ZONE_INFORMATION& zone, LONGLONG units);
LONG BiasAtLocal(const TIME_ZONE_INFORMATION& zone, LONGLONG units);

} // namespace qxplatform
