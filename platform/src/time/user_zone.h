// The user's time zone: TZ, otherwise the machine's zone.
#pragma once

#include <minwindef.h>

#include <ctime>
#include <string>

namespace qxplatform
{

// Returns the offset of local time from UTC in seconds at a moment (seconds since 1970).
LONG ZoneOffsetAt(time_t universal);

// Returns the moment of a local time (counted like UTC). A local time that occurs twice means its first occurrence, in
// daylight saving time. A local time that is skipped counts as daylight saving time, too.
time_t MomentOfLocal(time_t local);

// Returns the C library's abbreviation of the zone at a moment, such as CET.
std::string ZoneAbbreviationAt(time_t universal);

} // namespace qxplatform
