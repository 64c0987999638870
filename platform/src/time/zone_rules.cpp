#include "time/zone_rules.h"

#include <unicode/ucal.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <iterator>
#include <string>
#include <vector>

#include "base/fork_gate.h"
#include "base/text.h"
#include "time/file_time.h"
#include "time/user_zone.h"

namespace qxplatform
{

namespace
{

using namespace std::chrono;

constexpr LONGLONG kUnitsPerMinute = 60 * kUnitsPerSecond;
constexpr int kLastWeek = 5;

struct Change
{
    time_t moment; // of the first second with the new offset
    LONG before;
    LONG after;

    // The local time of the change on the old clock.
    sys_seconds Local() const { return sys_seconds(seconds(moment + before)); }
};

time_t YearBegin(year number)
{
    return sys_seconds(sys_days(number / 1 / 1)).time_since_epoch().count();
}

// Returns the first second in (begin, end] that has the offset of the end.
time_t FindChange(time_t begin, time_t end)
{
    const LONG after = ZoneOffsetAt(end);
    while (end - begin > 1)
    {
        const time_t middle = begin + (end - begin) / 2;
        (ZoneOffsetAt(middle) == after ? end : begin) = middle;
    }
    return end;
}

// Compares the offsets at the ends of each week, because daylight saving time, and any interruption of it, lasts longer
// than a week.
std::vector<Change> ChangesOf(year number)
{
    constexpr time_t kWeek = 7 * 86400;
    std::vector<Change> changes;
    const time_t end = YearBegin(number + years(1));
    for (time_t begin = YearBegin(number); begin < end; begin += kWeek)
    {
        const time_t next = std::min(begin + kWeek, end);
        const LONG before = ZoneOffsetAt(begin);
        const LONG after = ZoneOffsetAt(next);
        if (before != after)
            changes.push_back({FindChange(begin, next), before, after});
    }
    return changes;
}

// The change to the larger offset, and the change back.
struct ChangePair
{
    Change toDaylight;
    Change toStandard;
};

bool FindPair(year number, ChangePair& pair)
{
    const std::vector<Change> changes = ChangesOf(number);
    if (changes.size() != 2 || changes[0].before != changes[1].after)
        return false;
    const bool isNorthern = changes[0].before < changes[0].after;
    pair = isNorthern ? ChangePair{changes[0], changes[1]} : ChangePair{changes[1], changes[0]};
    return true;
}

int WeekOf(year_month_day date)
{
    return static_cast<int>((static_cast<unsigned>(date.day()) - 1) / 7) + 1;
}

bool IsInLastWeek(year_month_day date)
{
    return date.day() + days(7) > (date.year() / date.month() / last).day();
}

// Returns the week of the month in a rule. It can be determined only from several years: a fourth Sunday may be the
// last one.
template <class PickChange>
int WeekOfRule(year first, PickChange pick)
{
    constexpr int kYearsLooked = 7;
    const int week = WeekOf(pick(first));
    bool isAlwaysLast = true;
    bool isAlwaysSame = true;
    for (year number = first; number < first + years(kYearsLooked); ++number)
    {
        const year_month_day date = pick(number);
        isAlwaysLast = isAlwaysLast && IsInLastWeek(date);
        isAlwaysSame = isAlwaysSame && WeekOf(date) == week;
    }
    return isAlwaysLast && (!isAlwaysSame || week == 4) ? kLastWeek : week;
}

SYSTEMTIME RuleOf(year number, Change ChangePair::*which, const ChangePair& present)
{
    const sys_seconds local = (present.*which).Local();
    const sys_days day = floor<days>(local);
    const hh_mm_ss time(local - day);
    const year_month_day date(day);
    const auto dateIn = [&](year other)
    {
        ChangePair pair;
        return FindPair(other, pair) ? year_month_day(floor<days>((pair.*which).Local())) : date;
    };
    SYSTEMTIME rule{};
    rule.wMonth = static_cast<WORD>(static_cast<unsigned>(date.month()));
    rule.wDayOfWeek = static_cast<WORD>(weekday(day).c_encoding());
    rule.wDay = static_cast<WORD>(WeekOfRule(number, dateIn));
    rule.wHour = static_cast<WORD>(time.hours().count());
    rule.wMinute = static_cast<WORD>(time.minutes().count());
    rule.wSecond = static_cast<WORD>(time.seconds().count());
    return rule;
}

void CopyName(std::u16string_view name, WCHAR (&target)[32])
{
    const std::size_t length = std::min(name.size(), std::size(target) - 1);
    *std::copy_n(name.begin(), length, target) = 0;
}

// Returns the system's name ("W. Europe Standard Time") if ICU has the zone, otherwise the C library's abbreviation.
std::u16string SystemNameOfZone()
{
    const ForkHold hold; // no fork while ICU holds its own locks
    UChar zone[128];
    UChar name[128];
    UErrorCode status = U_ZERO_ERROR;
    const std::int32_t zoneLength = ucal_getHostTimeZone(zone, std::size(zone), &status);
    const std::int32_t length = ucal_getWindowsTimeZoneID(zone, zoneLength, name, std::size(name), &status);
    if (U_FAILURE(status) || length <= 0)
        return {};
    return std::u16string(name, static_cast<std::size_t>(length));
}

void NameZone(TIME_ZONE_INFORMATION& zone, time_t standard, time_t daylight)
{
    constexpr std::u16string_view kInd = u"Standard";
    std::u16string name = SystemNameOfZone();
    CopyName(name.empty() ? ToWide(ZoneAbbreviationAt(standard)) : name, zone.StandardName);
    if (const std::size_t at = name.find(kInd); at != name.npos)
        name.replace(at, kInd.size(), u"Daylight");
    CopyName(name.empty() ? ToWide(ZoneAbbreviationAt(daylight)) : name, zone.DaylightName);
}

bool IsValidRule(const SYSTEMTIME& rule)
{
    const bool isRelative = rule.wYear == 0;
    return rule.wMonth >= 1 && rule.wMonth <= 12 && rule.wDay >= 1 && rule.wDay <= (isRelative ? kLastWeek : 31) &&
           rule.wDayOfWeek <= 6 && rule.wHour < 24 && rule.wMinute < 60 && rule.wSecond < 60 &&
           rule.wMilliseconds < 1000;
}

sys_days DayOfRule(const SYSTEMTIME& rule, year number)
{
    const auto monthOfRule = number / month(rule.wMonth);
    if (rule.wYear != 0)
        return monthOfRule / static_cast<int>(rule.wDay);
    const weekday day(rule.wDayOfWeek);
    return rule.wDay < kLastWeek ? sys_days(monthOfRule / day[rule.wDay]) : sys_days(monthOfRule / day[last]);
}

// Returns the local time at which a rule takes effect in a year, on the clock before the change.
LONGLONG UnitsOfRule(const SYSTEMTIME& rule, year number)
{
    const LONGLONG dayCount = (DayOfRule(rule, number) - kFirstFileTimeDay).count();
    const LONGLONG secondCount = ((dayCount * 24 + rule.wHour) * 60 + rule.wMinute) * 60 + rule.wSecond;
    return secondCount * kUnitsPerSecond + rule.wMilliseconds * (kUnitsPerSecond / 1000);
}

LONG StandardBias(const TIME_ZONE_INFORMATION& zone)
{
    return zone.Bias + zone.StandardBias;
}

LONG DaylightBias(const TIME_ZONE_INFORMATION& zone)
{
    return zone.Bias + zone.DaylightBias;
}

bool IsBetween(LONGLONG units, LONGLONG begin, LONGLONG end)
{
    return begin < end ? units >= begin && units < end : units >= begin || units < end;
}

year YearOf(LONGLONG units)
{
    return year_month_day(kFirstFileTimeDay + days(units / (24 * 60 * kUnitsPerMinute))).year();
}

// `shiftAtStart` and `shiftAtEnd`, in minutes, convert the local times of the rules to the clock of the compared time.
LONG BiasAt(const TIME_ZONE_INFORMATION& zone, LONGLONG units, LONG shiftAtStart, LONG shiftAtEnd)
{
    if (!HasDaylightTime(zone))
        return zone.Bias;
    const year number = YearOf(units);
    const LONGLONG begin = UnitsOfRule(zone.DaylightDate, number) + shiftAtStart * kUnitsPerMinute;
    const LONGLONG end = UnitsOfRule(zone.StandardDate, number) + shiftAtEnd * kUnitsPerMinute;
    return IsBetween(units, begin, end) ? DaylightBias(zone) : StandardBias(zone);
}

} // namespace

bool ZoneInformationAt(time_t universal, TIME_ZONE_INFORMATION& zone)
{
    const year number = year_month_day(floor<days>(sys_seconds(seconds(universal)))).year();
    zone = {};
    zone.DaylightBias = -60; // the system's value for a zone without daylight saving time
    ChangePair pair;
    if (!FindPair(number, pair))
    {
        zone.Bias = -ZoneOffsetAt(universal) / 60;
        NameZone(zone, universal, universal);
        return false;
    }
    zone.Bias = -pair.toStandard.after / 60;
    zone.DaylightBias = -pair.toDaylight.after / 60 - zone.Bias;
    zone.DaylightDate = RuleOf(number, &ChangePair::toDaylight, pair);
    zone.StandardDate = RuleOf(number, &ChangePair::toStandard, pair);
    NameZone(zone, pair.toStandard.moment, pair.toDaylight.moment);
    return true;
}

bool HasDaylightTime(const TIME_ZONE_INFORMATION& zone)
{
    return zone.DaylightDate.wMonth != 0 && zone.StandardDate.wMonth != 0;
}

bool IsValidZone(const TIME_ZONE_INFORMATION& zone)
{
    return !HasDaylightTime(zone) || (IsValidRule(zone.DaylightDate) && IsValidRule(zone.StandardDate));
}

LONG BiasAtUniversal(const TIME_ZONE_INFORMATION& zone, LONGLONG units)
{
    return BiasAt(zone, units, StandardBias(zone), DaylightBias(zone));
}

LONG BiasAtLocal(const TIME_ZONE_INFORMATION& zone, LONGLONG units)
{
    return BiasAt(zone, units, 0, 0);
}

} // namespace qxplatform
