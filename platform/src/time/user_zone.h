// The time zone of the user: TZ, else the machine's.
#pragma once

#include <minwindef.h>

#include <ctime>
#include <string>

namespace qxplatform
{

// Seconds to add to universal time for local time at a moment (seconds since 1970).
LONG ZoneOffsetAt(time_t universal);

// The moment of a local time (counted as if it were universal). Of a time that the clocks show twice the first, in
// daylight saving time; one that they skip is read as daylight saving time too.
time_t MomentOfLocal(time_t local);

// As the C library abbreviates it at a moment: CET.
std::string ZoneAbbreviationAt(time_t universal);

} // namespace qxplatform
