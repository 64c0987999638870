// Where a thread stands while it is suspended, and where it learns that it is to end.
#pragma once

#include <minwindef.h>

#include <atomic>

namespace qxplatform
{

// A thread enters its gate before it blocks, and where the stop signal finds it at a harmless place. It leaves only
// while nobody has it suspended. So a thread that is at its gate counts as stopped, wherever it sleeps, and nobody
// needs to see it sleep. One word holds all of this, so that the signal's handler can use it.
class Gate
{
public:
    static constexpr DWORD kMaximumSuspendCount = 127;
    static constexpr DWORD kFailed = 0xFFFFFFFF;

    // By the thread itself.

    void Enter() { _word.fetch_or(kAtGate); }
    // Sleeps while the thread is suspended. False if it is to end: then it stays at the gate.
    bool Leave();
    // Whether something keeps the thread from going on.
    bool IsClosed() const { return (_word.load() & ~kAtGate) != 0; }

    // By any thread. The first two give the former count, and `failed` where it can't be raised further.

    DWORD Suspend();
    DWORD Resume();
    void OrderEnd();
    bool IsEndOrdered() const { return (_word.load() & kMustEnd) != 0; }
    bool IsThreadAtGate() const { return (_word.load() & kAtGate) != 0; }

private:
    static constexpr LONG kCountMask = 0xFF;
    static constexpr LONG kAtGate = 0x100;
    static constexpr LONG kMustEnd = 0x200;

    LONG* Word();

    std::atomic<LONG> _word = 0;
};

} // namespace qxplatform
