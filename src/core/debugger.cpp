#include "core/debugger.h"

#include <windows.h>

#include <atomic>

namespace qx
{

namespace
{

enum class Debugger
{
    NotAsked,
    Absent,
    Present
};

std::atomic<StackTraceHook> stackTraceHook = nullptr;
std::atomic<Debugger> debugger = Debugger::NotAsked;

bool IsDebugged()
{
    Debugger known = debugger.load(std::memory_order_relaxed);
    if (known == Debugger::NotAsked)
    {
        known = IsDebuggerPresent() ? Debugger::Present : Debugger::Absent;
        debugger.store(known, std::memory_order_relaxed);
    }
    return known == Debugger::Present;
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

void BreakIfDebugged()
{
    if (IsDebugged())
        DebugBreak();
}

void ForgetDebuggerTest()
{
    debugger.store(Debugger::NotAsked, std::memory_order_relaxed);
}

} // namespace qx
