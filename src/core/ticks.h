// The library's clock for deadlines.
#pragma once

#include "core/critical_section.h"

namespace qx
{

// Milliseconds since the system's start.
unsigned long long UtilGetTicks();

using TickFunction = unsigned long long(WINAPI*)();

// Called once while the library starts, with the system's 64-bit counter where that could be bound; without it, by
// null, the wraps of the 32-bit one are counted. Before this call the 32-bit counter is given as it is.
void DecideTickSource(TickFunction tickCount64);

// Makes 64 bits of a counter that wraps at 32, provided that it is asked in every round.
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
