// Acquires exclusive locks although only shared ones are available, because a descriptor without write access gets no
// others. The caller first sets its own lock and then checks for conflicting ones, so two conflicting locks are never
// both granted. To avoid that both are refused, each caller holds a claim for that short time, and the claim's number
// lets the earlier one succeed.
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
