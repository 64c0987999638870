#include "files/claim.h"

#include <cstdint>
#include <ctime>

#include <sched.h>
#include <unistd.h>

namespace qxplatform
{
namespace
{

// A claim is held for microseconds. If one lasts this long (in nanoseconds), its process has probably been stopped.
constexpr std::int64_t kPatience = 200'000'000;

std::int64_t Nanoseconds()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * 1'000'000'000 + now.tv_nsec;
}

// Returns a number that is higher than the numbers of earlier claims. All processes share the clock; the thread id
// distinguishes claims made at the same moment.
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
    // Returns true if the layer has a lock in the range. A lock that extends beyond the range of claims belongs to
    // another program, which has locked the whole file.
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
        // The conflicting lock is either permanent or a short-lived one, whose owner holds a claim. It is permanent if
        // the conflict occurs twice without another claim: the first time, the owner may just have withdrawn its claim.
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
