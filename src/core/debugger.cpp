#include "core/debugger.h"

#include <windows.h>

#include <atomic>

namespace qx
{

namespace
{

enum class Debugger
{
    notAsked,
    absent,
    present
};

std::atomic<StackTraceHook> stackTraceHook{nullptr};
std::atomic<Debugger> debugger{Debugger::notAsked};

bool IsDebugged()
{
    Debugger known = debugger.load(std::memory_order_relaxed);
    if (known == Debugger::notAsked)
    {
        known = IsDebuggerPresent() ? Debugger::present : Debugger::absent;
        debugger.store(known, std::memory_order_relaxed);
    }
    return known == Debugger::present;
}

} // namespace

StackTraceHook SetStackTraceHook(StackTraceHook hook)
{
    return stackTraceHook.exchange(hook, std::memory_order_acq_rel);
}

void BreakOrTrace(int frames)
{
    if (IsDebugged())
        DebugBreak();
    else if (const StackTraceHook hook = stackTraceHook.load(std::memory_order_acquire))
        hook(frames);
}

void ForgetDebuggerTest()
{
    debugger.store(Debugger::notAsked, std::memory_order_relaxed);
}

} // namespace qx
