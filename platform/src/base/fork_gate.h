// Lets a forked child continue.
//
// A forked child has one thread. Data that other threads of the parent were changing stays half changed in the child,
// and a lock that one of them held is never released. Therefore fork() waits until no other thread is inside a
// ForkHold, and threads that want to enter one wait until the fork is done. The holds are: every lock of the layer
// (base/mutex.h), every critical section, and the calls of ICU that take ICU's own locks. Locks need no fixed order for
// this, because no thread holds any of them during the fork.
//
// A thread may block inside a critical section for a long time, even waiting for the thread that forks. fork()
// therefore waits at most half a second. Locks that such a thread holds are taken over in the child: see
// WasAbandoned().
#pragma once

#include <atomic>
#include <cstdint>

namespace qxplatform
{

// The gate's record of a thread, in thread-local memory. A thread removes its record from the list when it ends.
struct ForkRecord
{
    std::atomic<int> holds = 0;
    std::uint32_t serial = 0; // 0 until the record is entered
    int exits = 0;
    ForkRecord* next = nullptr;
    ForkRecord** link = nullptr; // null if it is in no list
};

// initial-exec, because every lock reads it, even where the loader must not be called to allocate thread-local objects.
[[gnu::tls_model("initial-exec")]] extern constinit thread_local ForkRecord forkRecord;
extern constinit std::atomic<bool> isForking;

void EnterForkRecord();
void WaitForFork();

// Returns the number of the calling thread, counted from 1. It stays the same in a forked child. No other thread ever
// has the same number, not even in a child.
inline std::uint32_t ThreadSerial()
{
    if (forkRecord.serial == 0) [[unlikely]]
        EnterForkRecord();
    return forkRecord.serial;
}

// Begins and ends a hold. Holds nest. Beginning the first one waits for a fork in progress.
inline void BeginForkHold()
{
    if (forkRecord.serial == 0) [[unlikely]]
        EnterForkRecord();
    const int holds = forkRecord.holds.load(std::memory_order_relaxed) + 1;
    forkRecord.holds.store(holds, std::memory_order_relaxed);
    // The thread that forks enforces this order on all processors; see fork_gate.cpp.
    std::atomic_signal_fence(std::memory_order_seq_cst);
    if (holds == 1 && isForking.load(std::memory_order_relaxed)) [[unlikely]]
        WaitForFork();
}

inline void EndForkHold()
{
    forkRecord.holds.store(forkRecord.holds.load(std::memory_order_relaxed) - 1, std::memory_order_release);
}

class ForkHold
{
public:
    ForkHold() { BeginForkHold(); }
    ForkHold(const ForkHold&) = delete;
    ForkHold& operator=(const ForkHold&) = delete;
    ~ForkHold() { EndForkHold(); }
};

// Returns true if the thread with that number belongs to a parent process. Such a thread never releases its locks.
bool WasAbandoned(std::uint32_t serial);

// Returns the number of forks between the process that loaded the layer and this one.
unsigned ForkGeneration();

} // namespace qxplatform
