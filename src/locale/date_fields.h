// Converts the groups of a matched pattern to the fields of a time.
#pragma once

#include "core/pattern/regex.h"
#include "core/text/string.h"
#include "locale/locale_date_info.h"

#include <windows.h>

#include <cstdint>

namespace qx
{

// Groups 1 to 3 are hour, minute and second. The date remains 0.
void SetTimeOnly(const clsRegExMatchList& matches, std::uint32_t flags, SYSTEMTIME& time);

// Groups 1 to 3 are the parts of the date, groups 4 to 6 the parts of the time. Returns 0, or kDateDefaulted if the
// date doesn't exist, or if today's values were used and the flags request a report.
std::int32_t SetDateAndTime(
    const clsRegExMatchList& matches, DateOrder order, std::uint32_t flags, const SYSTEMTIME& today, SYSTEMTIME& time);

// Converts an hour of the 12-hour clock to the 24-hour clock. `marker` is AM or PM in upper case; an empty marker
// changes nothing.
void ApplyMarker(const String& marker, SYSTEMTIME& time);

} // namespace qx
