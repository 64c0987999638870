// Lets a forked child continue.
//
// A forked child has one thread. Whatever the other threads were changing stays half changed in the child, and a lock
// that one of them held is never released. So fork() waits until no other thread is inside a ForkHold, and threads that
// want to enter one wait until the fork is done. Every lock of the layer (base/mutex.h), every critical section and the
// calls of ICU that take ICU's own locks are such holds. No order of locks is needed: no thread holds any of them.
//
// A thread may block inside a critical section for long, even for the thread that forks. fork() waits at most half a
// second. The locks that such a thread holds are taken over in the child: see WasAbandoned().
#pragma once

#include <atomic>
#include <cstdint>

namespace qxplatform
{

// What the gate keeps of a thread. Threads that end leave the list in time; their memory is their own.
struct ForkRecord
{
    std::atomic<int> holds = 0;
    std::uint32_t serial = 0; // 0 until the thread is known to the gate
    int exits = 0;
    ForkRecord* next = nullptr;
    ForkRecord** link = nullptr; // null if it is in no list
};

// initial-exec: read by every lock, also where the loader must not be called for the memory of thread-local objects.
[[gnu::tls_model("initial-exec")]] extern constinit thread_local ForkRecord forkRecord;
extern constinit std::atomic<bool> isForking;

void EnterForkRecord();
void WaitForFork();

// The number of the calling thread, from 1 on. It stays the same in a forked child, and no other thread, also of a
// child, ever has the same.
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
    // The thread that forks makes the processors keep this order; see fork_gate.cpp.
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

// Returns true if the thread with that number belongs to a parent process, and so will never release what it holds.
bool WasAbandoned(std::uint32_t serial);

// How many forks lie between this process and the one that loaded the layer.
unsigned ForkGeneration();

} // namespace qxplatform
