// From the groups of a matched pattern to the fields of a time.
#pragma once

#include "core/pattern/regex.h"
#include "core/text/string.h"
#include "locale/locale_date_info.h"

#include <windows.h>

#include <cstdint>

namespace qx
{

// Groups 1 to 3 are hour, minute and second; the date stays 0.
void SetTimeOnly(const clsRegExMatchList& matches, std::uint32_t flags, SYSTEMTIME& time);

// Groups 1 to 3 are the parts of a date, 4 to 6 those of a time. 0, or kDateDefaulted where the flags ask for it or the
// date doesn't exist.
std::int32_t SetDateAndTime(
    const clsRegExMatchList& matches, DateOrder order, std::uint32_t flags, const SYSTEMTIME& today, SYSTEMTIME& time);

// Makes an hour of the half of the day that a marker in capitals tells one of the day. An empty marker changes nothing.
void ApplyMarker(const String& marker, SYSTEMTIME& time);

} // namespace qx
