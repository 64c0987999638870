// Acquires exclusive locks by means of shared ones, because a descriptor without write access gets no others. The
// caller first sets its own lock and then checks for conflicting ones, so two conflicting locks are never both granted.
// To prevent both from being refused, each caller holds a claim during that short time, and the claim with the lower
// number, which is the earlier one, succeeds.
#pragma once

#include "files/range_lock.h"

#include <functional>

namespace qxplatform
{

// The functions to set, check for and withdraw the locks.
struct ClaimedLock
{
    std::function<LockResult()> set;
    std::function<bool()> meetsOthers;
    std::function<void()> withdraw;
};

LockResult LockWithClaim(int descriptor, LockKind claimKind, const ClaimedLock& lock);

} // namespace qxplatform
