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

// Accurate to the kernel's clock tick. Zeros if the process has no such thread.
ProcessorTimes ProcessorTimesOf(DWORD threadId);

} // namespace qxplatform
