#include "base/lock_word.h"

namespace qxplatform
{

bool LockWord::TryToTake()
{
    LONG state = Word().load(std::memory_order_relaxed);
    if (state != 0 && !WasAbandoned(static_cast<std::uint32_t>(state) >> 1))
        return false;
    const LONG wanted = Mine() | (state & kHasWaiters);
    return Word().compare_exchange_strong(state, wanted, std::memory_order_acquire, std::memory_order_relaxed);
}

// Takes the lock if it is free, and otherwise marks that threads wait for it. A thread that takes the lock here sets
// the mark too, because others may still be waiting. Returns false if another thread holds the lock; `state` is then
// the value to wait on.
bool LockWord::MarkOrTake(LONG& state)
{
    state = Word().load(std::memory_order_relaxed);
    for (;;)
    {
        const bool isFree = state == 0 || WasAbandoned(static_cast<std::uint32_t>(state) >> 1);
        if (!isFree && (state & kHasWaiters) != 0)
            return false;
        const LONG wanted = (isFree ? Mine() : state) | kHasWaiters;
        if (!Word().compare_exchange_weak(state, wanted, std::memory_order_acquire, std::memory_order_relaxed))
            continue;
        if (isFree)
            return true;
        state = wanted;
    }
}

} // namespace qxplatform
