#include "locale/date_fields.h"

#include "locale/date.h"
#include "locale/date_parser.h"

#include <wchar.h>

#include <cstdint>

namespace qx
{

namespace
{

struct DateFields
{
    std::int32_t day;
    std::int32_t month;
    std::int32_t year;
};

// Returns the number in a group: 0 if the group took no part, and a number that no date contains if it is out of range.
// Returns `substitute` if there is no such group.
std::int32_t NumberAt(const clsRegExMatchList& matches, std::size_t entry, std::int32_t substitute)
{
    return entry < matches.Count() ? static_cast<std::int32_t>(wcstol(matches[entry].text, nullptr, 10)) : substitute;
}

DateFields InOrder(const std::int32_t (&parts)[3], DateOrder order)
{
    switch (order)
    {
    case DateOrder::MonthDayYear:
        return {parts[1], parts[0], parts[2]};
    case DateOrder::YearMonthDay:
        return {parts[2], parts[1], parts[0]};
    default:
        return {parts[0], parts[1], parts[2]};
    }
}

// If the field is missing, sets it to 0 or today's value, depending on the flags. Returns true if today's value was
// used.
bool FillMissing(std::int32_t& field, std::uint32_t flags, WORD ofToday)
{
    if (field != 0 && field != kNotGiven)
        return false;
    const bool zero = (flags & LOCDATE_ZERO_MISSING) != 0;
    field = zero ? 0 : ofToday;
    return !zero;
}

bool Exists(const DateFields& date)
{
    const clsDate calendar(date.day, date.month, date.year);
    return calendar.day == date.day && calendar.month == date.month && calendar.year == date.year &&
           date.year < kNotGiven; // the field must not have the value that means "not given"
}

} // namespace

void SetTimeOnly(const clsRegExMatchList& matches, std::uint32_t flags, SYSTEMTIME& time)
{
    const std::int32_t missing = (flags & LOCDATE_ZERO_MISSING) != 0 ? 0 : kNotGiven;
    time.wHour = static_cast<WORD>(NumberAt(matches, 1, missing));
    time.wMinute = static_cast<WORD>(NumberAt(matches, 2, missing));
    time.wSecond = static_cast<WORD>(NumberAt(matches, 3, missing));
}

std::int32_t SetDateAndTime(
    const clsRegExMatchList& matches, DateOrder order, std::uint32_t flags, const SYSTEMTIME& today, SYSTEMTIME& time)
{
    const bool zeroMissing = (flags & LOCDATE_ZERO_MISSING) != 0;
    const std::int32_t missing = zeroMissing ? 0 : kNotGiven;
    DateFields date =
        InOrder({NumberAt(matches, 1, missing), NumberAt(matches, 2, missing), NumberAt(matches, 3, missing)}, order);

    bool isDefaulted = FillMissing(date.day, flags, today.wDay);
    isDefaulted |= FillMissing(date.month, flags, today.wMonth);
    isDefaulted |= FillMissing(date.year, flags, today.wYear);
    std::int32_t result = isDefaulted && (flags & LOCDATE_REPORT_DEFAULT) != 0 ? kDateDefaulted : 0;
    if ((flags & LOCDATE_EXPAND_YEAR) != 0 && date.year < 100)
        date.year += date.year >= 30 ? 1900 : 2000;
    time.wDay = static_cast<WORD>(date.day);
    time.wMonth = static_cast<WORD>(date.month);
    time.wYear = static_cast<WORD>(date.year);

    const std::int32_t hour = NumberAt(matches, 4, kNotGiven);
    if (hour == kNotGiven)
    {
        time.wHour = time.wMinute = time.wSecond = (flags & LOCDATE_MARK_NO_TIME) != 0 ? kNotGiven : 0;
    }
    else
    {
        time.wHour = static_cast<WORD>(hour);
        time.wMinute = static_cast<WORD>(NumberAt(matches, 5, 0));
        time.wSecond = static_cast<WORD>(NumberAt(matches, 6, 0));
    }
    if (!zeroMissing && !Exists(date))
        result = kDateDefaulted;
    return result;
}

void ApplyMarker(const String& marker, SYSTEMTIME& time)
{
    if (marker.IsEmpty())
        return;
    const bool isAfternoon = marker.CharAt(0) == L'P';
    if (time.wHour == 12)
        time.wHour = isAfternoon ? 12 : 0;
    if (isAfternoon && time.wHour < 12)
        time.wHour = static_cast<WORD>(time.wHour + 12);
}

} // namespace qx
