// The order and the separators of a locale's dates and times.
#pragma once

#include "core/text/string.h"

#include <windows.h>

#include <cstdint>

namespace qx
{

enum class DateOrder : std::uint32_t
{
    DayMonthYear = 0,
    MonthDayYear = 1,
    YearMonthDay = 2
};

struct clsLocaleDateInfo
{
    explicit clsLocaleDateInfo(LCID locale);
    clsLocaleDateInfo() = default;

    LCID lcid = 0;
    DateOrder dateOrder = DateOrder::DayMonthYear;
    String dateSeparator; // both separators are without spaces
    String timeSeparator;
};

// Returns the information of the user's locale as it was at the first call.
const clsLocaleDateInfo& DefaultDateInfo();

} // namespace qx
