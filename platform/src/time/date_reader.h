// Dates and times from text.
#pragma once

#include <minwindef.h>

#include <string_view>

#include "text/locale.h"

namespace qxplatform
{

// What a text says; a part that isn't there is null or 0.
struct ReadDate
{
    SYSTEMTIME time{};
    bool hasDate = false;
};

// Numbers in the order of the locale, or in another one where they don't fit it; months by name; a time of 24 hours or
// with a marker, before or behind the date or alone. A missing day is the first, a missing year the present one.
bool ReadDateText(std::u16string_view text, const Locale& locale, ReadDate& result);

} // namespace qxplatform
