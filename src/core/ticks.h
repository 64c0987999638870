// The library's clock for deadlines.
#pragma once

#include "core/critical_section.h"

namespace qx
{

// Returns the milliseconds since the system started.
unsigned long long UtilGetTicks();

using TickFunction = unsigned long long(WINAPI*)();

// Called once while the library starts. `tickCount64` is the system's 64-bit counter, or null if the system has none;
// then UtilGetTicks counts the wraps of the 32-bit counter. Before this call UtilGetTicks returns the 32-bit counter
// unchanged.
void DecideTickSource(TickFunction tickCount64);

// Extends a 32-bit counter to 64 bits. `Now` must be called at least once per wrap of the counter.
class WrappingTicks
{
public:
    explicit WrappingTicks(DWORD(WINAPI* counter)()) : _counter(counter) {}

    unsigned long long Now();

private:
    DWORD(WINAPI* const _counter)();
    clsCriticalSection _lock;
    DWORD _last = 0;
    unsigned long long _rounds = 0;
};

} // namespace qx
