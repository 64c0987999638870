// The processor time that threads have used, in units of 100 ns.
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

// To the kernel's clock tick. Zeros where there is no such thread in the process.
ProcessorTimes ProcessorTimesOf(DWORD threadId);

} // namespace qxplatform
