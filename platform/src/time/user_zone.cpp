#include "time/user_zone.h"

#include "base/fork_gate.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdlib>

namespace qxplatform
{

namespace
{

// The time of the last tzset() that found no TZ, in nanoseconds of the coarse monotonic clock; 0 if the last one found
// a TZ.
std::atomic<std::int64_t> lastLookAtMachineZone = 0;

// Without TZ, each tzset() checks the file system for a change of the machine's zone. One check in this time is enough.
constexpr std::int64_t kMachineZoneKept = 1'000'000'000;

// Calls tzset(), because localtime_r need not detect a changed zone.
void DetectZone()
{
    if (getenv("TZ") != nullptr)
    {
        lastLookAtMachineZone.store(0, std::memory_order_relaxed);
        tzset();
        return;
    }
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
    const std::int64_t moment = now.tv_sec * 1'000'000'000 + now.tv_nsec;
    const std::int64_t last = lastLookAtMachineZone.load(std::memory_order_relaxed);
    if (last != 0 && moment - last < kMachineZoneKept)
        return;
    tzset();
    lastLookAtMachineZone.store(moment, std::memory_order_relaxed);
}

tm LocalAt(time_t universal)
{
    const ForkHold hold; // no fork while the C library holds its own locks
    tm local{};
    localtime_r(&universal, &local);
    return local;
}

// Returns the offset of standard time in 1970, which also serves for all earlier times. Few zones have an earlier
// history, and it includes local mean times: their offsets aren't whole minutes, which the system can't represent.
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
    DetectZone();
    return OffsetAt(universal);
}

time_t MomentOfLocal(time_t local)
{
    constexpr time_t kDay = 86400;
    const ForkHold hold;
    DetectZone();
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
    DetectZone();
    return LocalAt(universal).tm_zone;
}

} // namespace qxplatform
