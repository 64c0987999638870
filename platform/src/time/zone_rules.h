// The system's form of a time zone: a bias, and the two days of a year when the clocks change.
#pragma once

#include <minwindef.h>
#include <timezoneapi.h>

#include <ctime>

namespace qxplatform
{

// As it is in the year of a moment. Whether it has daylight saving time then; only so far as the form can tell it: with
// two changes in the year.
bool ZoneInformationAt(time_t universal, TIME_ZONE_INFORMATION& zone);

bool HasDaylightTime(const TIME_ZONE_INFORMATION& zone);

// Whether the rules can be followed: months, weeks, weekdays and times within bounds.
bool IsValidZone(const TIME_ZONE_INFORMATION& zone);

// Minutes to add to local time for universal time at a time of the given kind, in units of 100 ns since 1601.
LONG BiasAtUniversal(const TIME_ZONE_INFORMATION& zone, LONGLONG units);
LONG BiasAtLocal(const TIME_ZONE_INFORMATION& zone, LONGLONG units);

} // namespace qxplatform
