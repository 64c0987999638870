#include "files/claim.h"

#include <cstdint>
#include <ctime>

#include <sched.h>
#include <unistd.h>

namespace qxplatform
{
namespace
{

// A claim is held for microseconds. If one stays for this long, its process has been stopped in between.
constexpr std::int64_t kPatience = 200'000'000;

std::int64_t Nanoseconds()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * 1'000'000'000 + now.tv_nsec;
}

// Earlier claims have lower numbers. The clock is the same for all processes; the thread tells two of one moment apart.
std::int64_t NewNumber()
{
    return (Nanoseconds() << 8 | (gettid() & 0xFF)) % kClaimRange.length;
}

class Claim
{
public:
    Claim(int descriptor, LockKind kind)
        : _descriptor(descriptor),
          _kind(kind),
          _range{kClaimRange.start + NewNumber(), 1}
    {
        Make();
    }
    Claim(const Claim&) = delete;
    Claim& operator=(const Claim&) = delete;
    ~Claim() { Withdraw(); }

    void Make() { LockRange(_descriptor, _kind, _range); }
    void Withdraw() { UnlockRange(_descriptor, _range); }

    bool HasEarlier() const { return Exists({kClaimRange.start, _range.start - kClaimRange.start}); }
    bool HasLater() const { return Exists({_range.end(), kClaimRange.end() - _range.end()}); }

private:
    // A lock that reaches beyond the range is none of the layer: another program has locked the whole file.
    bool Exists(const Range& range) const
    {
        Range found;
        return range.length > 0 && FindForeignLock(_descriptor, LockKind::Exclusive, range, &found) &&
               kClaimRange.Contains(found);
    }

    int _descriptor;
    LockKind _kind;
    Range _range;
};

} // namespace

LockResult LockWithClaim(int descriptor, LockKind claimKind, const ClaimedLock& lock)
{
    Claim claim(descriptor, claimKind);
    const std::int64_t deadline = Nanoseconds() + kPatience;
    bool wasAlone = false;
    while (true)
    {
        const LockResult result = lock.set();
        if (result != LockResult::Granted)
            return result;
        if (!lock.meetsOthers())
            return LockResult::Granted;

        const bool hasEarlier = claim.HasEarlier();
        const bool isAlone = !hasEarlier && !claim.HasLater();
        lock.withdraw();
        // The lock that was met belongs to one of the other claims, or is there to stay. It is there to stay if it is
        // met a second time with no claims around: the first time, its owner might just have taken it away.
        if ((isAlone && wasAlone) || Nanoseconds() > deadline)
            return LockResult::Refused;
        wasAlone = isAlone;
        if (hasEarlier)
        {
            claim.Withdraw();
            while (claim.HasEarlier() && Nanoseconds() < deadline)
                sched_yield();
            claim.Make();
        }
        else if (!isAlone)
            sched_yield();
    }
}

} // namespace qxplatform
