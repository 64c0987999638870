#include "time/user_zone.h"

#include "base/fork_gate.h"

#include <algorithm>

namespace qxplatform
{

namespace
{

// localtime_r need not detect a changed zone; tzset() does, for the calls that follow.
tm LocalAt(time_t universal)
{
    const ForkHold hold; // the C library has a lock of its own
    tm local{};
    localtime_r(&universal, &local);
    return local;
}

// The standard time of the year 1970. Earlier history is known for few zones and includes local mean times, whose
// offsets aren't whole minutes, as the system's zones require.
LONG FirstOffset()
{
    constexpr time_t kHalfYear = 182 * 86400;
    return static_cast<LONG>(std::min(LocalAt(0).tm_gmtoff, LocalAt(kHalfYear).tm_gmtoff));
}

LONG OffsetAt(time_t universal)
{
    return universal < 0 ? FirstOffset() : static_cast<LONG>(LocalAt(universal).tm_gmtoff);
}

} // namespace

LONG ZoneOffsetAt(time_t universal)
{
    const ForkHold hold;
    tzset();
    return OffsetAt(universal);
}

time_t MomentOfLocal(time_t local)
{
    constexpr time_t kDay = 86400;
    const ForkHold hold;
    tzset();
    const LONG before = OffsetAt(local - kDay);
    const LONG after = OffsetAt(local + kDay);
    if (before == after)
        return local - before;
    const auto isRight = [local](LONG offset)
    {
        return OffsetAt(local - offset) == offset;
    };
    const LONG larger = std::max(before, after);
    const LONG smaller = std::min(before, after);
    return local - (!isRight(larger) && isRight(smaller) ? smaller : larger);
}

std::string ZoneAbbreviationAt(time_t universal)
{
    const ForkHold hold;
    tzset();
    return LocalAt(universal).tm_zone;
}

} // namespace qxplatform
