#include "base/lock_word.h"

namespace qxplatform
{

constinit std::atomic<LONG> LockWaiters::_counts[kCounts] = {};

void LockWaiters::Reset()
{
    for (std::atomic<LONG>& count : _counts)
        count.store(0, std::memory_order_relaxed);
}

bool LockWord::TryToTake()
{
    LONG state = Word().load(std::memory_order_relaxed);
    if (state != 0 && !WasAbandoned(static_cast<std::uint32_t>(state)))
        return false;
    return Word().compare_exchange_strong(state, Mine(), std::memory_order_acquire, std::memory_order_relaxed);
}

// Returns false if another thread holds the lock; `state` is then the value to wait on.
bool LockWord::TakeOrRead(LONG& state)
{
    for (;;)
    {
        state = Word().load(std::memory_order_relaxed);
        if (state != 0 && !WasAbandoned(static_cast<std::uint32_t>(state)))
            return false;
        if (Word().compare_exchange_weak(state, Mine(), std::memory_order_acquire, std::memory_order_relaxed))
            return true;
    }
}

// After the barriers, each thread that releases the lock either reads the count that this thread has raised, or has
// stored its release before, so that this thread doesn't sleep.
void LockWord::SleepWhile(LONG state)
{
    std::atomic<LONG>& count = LockWaiters::Of(&_word);
    count.fetch_add(1, std::memory_order_relaxed);
    RunBarriers();
    FutexWait(&_word, state);
    count.fetch_sub(1, std::memory_order_relaxed);
}

} // namespace qxplatform
