// The gate at which a thread stops while it is suspended, and at which it detects that it has been terminated.
#pragma once

#include <minwindef.h>

#include <atomic>

namespace qxplatform
{

// A thread enters its gate before it blocks, and when the stop signal interrupts it at a safe point. It leaves only
// while nobody has suspended it. A thread at its gate thus counts as stopped, wherever it blocks, without having to
// block for that purpose. All state is in one word, so that the signal handler can use it.
class Gate
{
public:
    static constexpr DWORD kMaximumSuspendCount = 127;
    static constexpr DWORD kFailed = 0xFFFFFFFF;

    // Called by the thread itself.

    void Enter() { _word.fetch_or(kAtGate); }
    // Blocks while the thread is suspended. Returns false if the thread has been terminated; it then stays at the gate.
    bool Leave();
    // Returns true if the thread may not continue.
    bool IsClosed() const { return (_word.load() & ~kAtGate) != 0; }

    // Called by any thread. The first two return the previous count, or kFailed if it can't be increased further.

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
