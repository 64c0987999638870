// The word of a lock: the thread that holds it. The owner is stored so that a forked child can take over a lock of a
// thread that exists only in the parent.
#pragma once

#include "base/fork_gate.h"
#include "base/futex.h"

#include <atomic>
#include <cstddef>
#include <cstdint>

#include <sys/single_threaded.h>

namespace qxplatform
{

// The numbers of threads that wait for locks, by the address of the lock. They aren't part of the lock, because a
// thread reads them after it has released the lock, when another thread may have destroyed it already. Locks that share
// a number cause needless wake-ups only.
class LockWaiters
{
public:
    static std::atomic<LONG>& Of(const LONG* word)
    {
        return _counts[(reinterpret_cast<std::uintptr_t>(word) >> 4) % kCounts];
    }

    // In a forked child, which has no waiting threads.
    static void Reset();

private:
    static constexpr std::size_t kCounts = 256;

    static std::atomic<LONG> _counts[kCounts];
};

// Refers to a LONG that is 0 while the lock is free. All operations run inside a ForkHold.
class LockWord
{
public:
    explicit LockWord(LONG& word) : _word(word) {}

    bool IsFree() const { return Word().load(std::memory_order_relaxed) == 0; }
    bool IsMine() const { return Word().load(std::memory_order_relaxed) == Mine(); }

    bool TakeIfFree()
    {
        // In a process with one thread, which many are, an ordinary store is enough and takes a fraction of the time.
        if (__libc_single_threaded)
            return IsFree() && (Word().store(Mine(), std::memory_order_relaxed), true);
        LONG expected = 0;
        return Word().compare_exchange_strong(expected, Mine(), std::memory_order_acquire, std::memory_order_relaxed);
    }

    // Also takes a lock that is held by a thread of the parent process.
    bool TryToTake();

    // Takes the lock, sleeping while another thread holds it. Before each sleep the caller's ForkHold ends and
    // `beforeSleep` is called; after it `afterSleep` is called and the hold begins again.
    template <class BeforeSleep, class AfterSleep>
    void Take(BeforeSleep beforeSleep, AfterSleep afterSleep)
    {
        for (LONG state = 0; !TakeOrRead(state);)
        {
            EndForkHold();
            beforeSleep();
            SleepWhile(state);
            afterSleep();
            BeginForkHold();
        }
    }

    // Doesn't access the lock afterwards, because another thread may already have taken, released and destroyed it.
    void Release()
    {
        LONG* const word = &_word;
        Word().store(0, std::memory_order_release);
        // A thread that begins to wait enforces this order on all processors.
        std::atomic_signal_fence(std::memory_order_seq_cst);
        if (LockWaiters::Of(word).load(std::memory_order_relaxed) != 0) [[unlikely]]
            FutexWakeOne(word);
    }

private:
    static LONG Mine() { return static_cast<LONG>(ThreadSerial()); }
    std::atomic_ref<LONG> Word() const { return std::atomic_ref<LONG>(_word); }
    bool TakeOrRead(LONG& state);
    void SleepWhile(LONG state);

    LONG& _word;
};

} // namespace qxplatform
