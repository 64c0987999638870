// Parses dates and times.
#pragma once

#include <minwindef.h>

#include <string_view>

#include "text/locale.h"

namespace qxplatform
{

// The date and time found in a text. Without a time, hour, minute and second are 0. Without a date, `hasDate` is false,
// and year, month and day are 0.
struct ReadDate
{
    SYSTEMTIME time{};
    bool hasDate = false;
};

// Accepts numbers in the locale's order, or in another order if they don't fit; month names; a 24-hour time or one with
// AM or PM, before or after the date or alone. A missing day is the first, a missing year the current one.
bool ReadDateText(std::u16string_view text, const Locale& locale, ReadDate& result);

} // namespace qxplatform
