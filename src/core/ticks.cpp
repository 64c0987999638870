#include "core/ticks.h"

#include "core/forever.h"

#include <atomic>

namespace qx
{
namespace
{

unsigned long long WINAPI PlainTicks()
{
    return GetTickCount();
}

unsigned long long WINAPI CountedTicks()
{
    static WrappingTicks& ticks = MakeForever<WrappingTicks>(&GetTickCount);
    return ticks.Now();
}

std::atomic<TickFunction> tickFunction = &PlainTicks;

} // namespace

unsigned long long UtilGetTicks()
{
    return tickFunction.load(std::memory_order_relaxed)();
}

void DecideTickSource(TickFunction tickCount64)
{
    tickFunction = tickCount64 ? tickCount64 : &CountedTicks;
}

// The counter is read while the lock is held, so that readings are in order.
unsigned long long WrappingTicks::Now()
{
    const clsCriticalSectionLock lock(_lock);
    const DWORD ticks = _counter();
    if (ticks < _last)
        ++_rounds;
    _last = ticks;
    return _rounds << 32 | ticks;
}

} // namespace qx
