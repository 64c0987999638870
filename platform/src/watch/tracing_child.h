// Accesses debug registers through a short-lived child process that attaches to the calling thread as a debugger would,
// for systems that don't offer breakpoints as performance events.
#pragma once

#include "watch/breakpoint.h"

#include <array>
#include <optional>

namespace qxplatform
{

using BreakpointSlots = std::array<std::optional<Breakpoint>, kBreakpointSlots>;

// Writes the calling thread's debug registers. They stay set when the child is gone, until the thread ends. Returns 0
// or an errno value. ENOSPC: the processor has no register left.
int WriteDebugRegistersByChild(const BreakpointSlots& slots);

// Reads and clears the calling thread's debug status register: a bit for each slot that was hit. Safe in a signal
// handler. Returns nothing if the thread can't be traced.
std::optional<unsigned> TakeDebugStatusByChild();

} // namespace qxplatform
