#include "locale/time_zone.h"

#include "locale/date.h"
#include "locale/time_arithmetic.h"

#include <algorithm>
#include <cstdint>

namespace qx
{

namespace
{

constexpr std::int32_t kLastWeek = 5;

template <class Call>
std::int32_t Convert(SYSTEMTIME& time, Call call)
{
    if (time.wYear == 0)
        return E_INVALIDARG;
    SYSTEMTIME given = time;
    SYSTEMTIME converted{};
    call(&given, &converted);
    time = converted;
    return 0;
}

// Returns 0 for Sunday, like the rules of TIME_ZONE_INFORMATION.
std::int32_t DayOfWeek(std::int32_t day, std::int32_t month, std::int32_t year)
{
    return clsDate(day, month, year).dayOfWeek - 1;
}

std::int32_t LastDayOf(std::int32_t month, std::int32_t year)
{
    std::int32_t day = 31;
    while (day > 28 && !clsDate(day, month, year).IsValid())
        --day;
    return day;
}

std::int32_t DayOfRule(const SYSTEMTIME& rule, std::int32_t year)
{
    const std::int32_t month = rule.wMonth;
    if (rule.wDay == kLastWeek)
    {
        const std::int32_t last = LastDayOf(month, year);
        return last - (DayOfWeek(last, month, year) - rule.wDayOfWeek + 7) % 7;
    }
    const std::int32_t first = 1 + (rule.wDayOfWeek - DayOfWeek(1, month, year) + 7) % 7;
    return first + (rule.wDay - 1) * 7;
}

} // namespace

std::int32_t ConvertLocalTimeToUTC(SYSTEMTIME& time)
{
    return Convert(time,
        [](SYSTEMTIME* local, SYSTEMTIME* universal) { TzSpecificLocalTimeToSystemTime(nullptr, local, universal); });
}

std::int32_t ConvertUTCToLocalTime(SYSTEMTIME& time)
{
    return Convert(time,
        [](SYSTEMTIME* universal, SYSTEMTIME* local) { SystemTimeToTzSpecificLocalTime(nullptr, universal, local); });
}

SYSTEMTIME ResolveZoneRule(const SYSTEMTIME& rule, std::uint32_t year)
{
    SYSTEMTIME time = rule;
    time.wDayOfWeek = 0xFFFF;
    if (rule.wMonth == 0)
        return time;
    time.wYear = static_cast<WORD>(std::min<std::uint32_t>(year, 0xFFFF));
    if (rule.wYear == 0)
        time.wDay = static_cast<WORD>(DayOfRule(rule, time.wYear));
    return time;
}

void GetDSTStartAndEndInUTC(std::uint32_t year, SYSTEMTIME& start, SYSTEMTIME& end)
{
    start = end = {};
    TIME_ZONE_INFORMATION zone;
    const DWORD kind = GetTimeZoneInformation(&zone);
    if (kind == TIME_ZONE_ID_UNKNOWN || kind == TIME_ZONE_ID_INVALID)
        return;
    start = ResolveZoneRule(zone.DaylightDate, year);
    end = ResolveZoneRule(zone.StandardDate, year);
    AddMinutes(start, zone.Bias);
    AddMinutes(end, std::int64_t{zone.Bias} + zone.DaylightBias);
}

} // namespace qx
