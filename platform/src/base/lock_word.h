// The word of a lock: the thread that holds it, and a flag for waiting threads. The owner is part of the word so that a
// forked child can take over a lock of a thread that exists only in the parent.
#pragma once

#include "base/fork_gate.h"
#include "base/futex.h"

#include <atomic>
#include <cstdint>

#include <sys/single_threaded.h>

namespace qxplatform
{

// Refers to a LONG that is 0 while the lock is free. All operations run inside a ForkHold.
class LockWord
{
public:
    explicit LockWord(LONG& word) : _word(word) {}

    bool IsFree() const { return Word().load(std::memory_order_relaxed) == 0; }
    bool IsMine() const { return (Word().load(std::memory_order_relaxed) & ~kHasWaiters) == Mine(); }

    // Takes the lock if it is free. Many processes have only one thread; they need only ordinary stores, which take a
    // fraction of the time.
    bool TakeIfFree()
    {
        if (__libc_single_threaded)
            return IsFree() && (Word().store(Mine(), std::memory_order_relaxed), true);
        LONG expected = 0;
        return Word().compare_exchange_strong(expected, Mine(), std::memory_order_acquire, std::memory_order_relaxed);
    }

    // Takes the lock if it is free or held by a thread of the parent process.
    bool TryToTake();

    // Takes the lock, sleeping while another thread holds it. Before each sleep the caller's ForkHold ends and
    // `beforeSleep` is called; after it `afterSleep` is called and the hold begins again.
    template <class BeforeSleep, class AfterSleep>
    void Take(BeforeSleep beforeSleep, AfterSleep afterSleep)
    {
        for (LONG state = 0; !MarkOrTake(state);)
        {
            EndForkHold();
            beforeSleep();
            FutexWait(&_word, state);
            afterSleep();
            BeginForkHold();
        }
    }

    // Releases the lock and doesn't access it afterwards, because another thread may already have taken, released and
    // destroyed it.
    void Release()
    {
        if (__libc_single_threaded)
            return Word().store(0, std::memory_order_relaxed);
        LONG* const word = &_word;
        if ((Word().exchange(0, std::memory_order_release) & kHasWaiters) != 0)
            FutexWakeOne(word);
    }

private:
    static constexpr LONG kHasWaiters = 1;

    static LONG Mine() { return static_cast<LONG>(ThreadSerial() << 1); }
    std::atomic_ref<LONG> Word() const { return std::atomic_ref<LONG>(_word); }
    bool MarkOrTake(LONG& state);

    LONG& _word;
};

} // namespace qxplatform
