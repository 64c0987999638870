// Taking what only one of several may have, by locks that can only be shared: a descriptor that can't write gets no
// others. One sets one's lock first and looks for the locks of others afterwards, so that two which exclude each other
// are never both granted; and so that not both are refused either, each holds a claim for that short time, by whose
// number the earlier one goes first.
#pragma once

#include "files/range_lock.h"

#include <functional>

namespace qxplatform
{

// How to set, look for and withdraw the locks in question.
struct ClaimedLock
{
    std::function<LockResult()> set;
    std::function<bool()> meetsOthers;
    std::function<void()> withdraw;
};

LockResult LockWithClaim(int descriptor, LockKind claimKind, const ClaimedLock& lock);

} // namespace qxplatform
