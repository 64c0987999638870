// How a locale writes dates and times.
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
    String dateSeparator; // without blanks, as the other
    String timeSeparator;
};

// That of the user's locale, as it was when it was asked for first.
const clsLocaleDateInfo& DefaultDateInfo();

} // namespace qx
