#include "time/user_zone.h"

#include <algorithm>

namespace qxplatform
{

namespace
{

tm LocalAt(time_t universal)
{
    tm local{};
    tzset(); // localtime_r need not look at a changed TZ
    localtime_r(&universal, &local);
    return local;
}

// The standard time of the year 1970. The zone's past before that is known for few zones, and goes back to local mean
// times, which aren't whole minutes off universal time, as the system's zones always are.
LONG FirstOffset()
{
    constexpr time_t halfYear = 182 * 86400;
    return static_cast<LONG>(std::min(LocalAt(0).tm_gmtoff, LocalAt(halfYear).tm_gmtoff));
}

} // namespace

LONG ZoneOffsetAt(time_t universal)
{
    return universal < 0 ? FirstOffset() : static_cast<LONG>(LocalAt(universal).tm_gmtoff);
}

time_t MomentOfLocal(time_t local)
{
    constexpr time_t day = 86400;
    const LONG before = ZoneOffsetAt(local - day);
    const LONG after = ZoneOffsetAt(local + day);
    if (before == after)
        return local - before;
    const auto isRight = [local](LONG offset)
    {
        return ZoneOffsetAt(local - offset) == offset;
    };
    const LONG larger = std::max(before, after);
    const LONG smaller = std::min(before, after);
    return local - (!isRight(larger) && isRight(smaller) ? smaller : larger);
}

std::string ZoneAbbreviationAt(time_t universal)
{
    return LocalAt(universal).tm_zone;
}

} // namespace qxplatform
