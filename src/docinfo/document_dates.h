// Converts the dates of documents.
#pragma once

#include "core/variant/variant.h"

#include <windows.h>

namespace qx
{

// Returns a date in UTC as VT_DATE in local time, with its milliseconds. A date that is unset or can't be converted
// becomes VT_EMPTY.
clsVariant ToLocalDate(const SYSTEMTIME& utc);

// Returns a date with these parts, which aren't checked. Pass 0 for `second` if the format has no seconds.
SYSTEMTIME DateOfParts(unsigned year, unsigned month, unsigned day, unsigned hour, unsigned minute, unsigned second);

} // namespace qx
