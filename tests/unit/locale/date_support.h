// Helpers shared by the tests of dates.
#pragma once

#include "support/shown_time.h"

#include "core/text/string.h"
#include "locale/date_parser.h"

#include <cstdint>

namespace qxtest
{

// The text that Show returns if there is no date.
inline constexpr char kNothing[] = "0000-00-00 00:00:00";

inline qx::clsLocaleDateInfo Info(qx::DateOrder order, const wchar_t* dateSeparator, const wchar_t* timeSeparator)
{
    qx::clsLocaleDateInfo info;
    info.dateOrder = order;
    info.dateSeparator = dateSeparator;
    info.timeSeparator = timeSeparator;
    return info;
}

// The system's settings, without a user's changes.
inline qx::DateSettings German()
{
    return {Info(qx::DateOrder::DayMonthYear, L".", L":"), L"HH:mm:ss", L"dd.MM.yyyy"};
}

inline qx::DateSettings American()
{
    return {Info(qx::DateOrder::MonthDayYear, L"/", L":"), L"h:mm:ss tt", L"M/d/yyyy"};
}

constexpr SYSTEMTIME kToday{2021, 7, 0, 9, 10, 11, 12, 0};

// Returns the fields, followed by " -52" if that is the result code.
inline std::string Parsed(qx::clsDateParser& parser, const wchar_t* text, std::uint32_t flags)
{
    SYSTEMTIME time;
    const std::int32_t result = parser.Parse(text, flags, kToday, time);
    EXPECT_EQ(time.wDayOfWeek, 0);
    EXPECT_EQ(time.wMilliseconds, 0);
    return Show(time) + (result == 0 ? "" : ' ' + std::to_string(result));
}

} // namespace qxtest
