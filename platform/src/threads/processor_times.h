// The processor time used by threads, in units of 100 ns.
#pragma once

#include <minwindef.h>

namespace qxplatform
{

struct ProcessorTimes
{
    LONGLONG user;
    LONGLONG kernel;
};

ProcessorTimes ProcessorTimesOfThisThread();

// Returns the times of a thread with the resolution of the kernel's clock tick, or zeros if the process has no such
// thread.
ProcessorTimes ProcessorTimesOf(DWORD threadId);

} // namespace qxplatform
