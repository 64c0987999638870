// A data breakpoint of the calling thread as a performance event of the kernel.
#pragma once

#include "base/descriptor.h"
#include "watch/breakpoint.h"

namespace qxplatform
{

// Starts a breakpoint that raises a SIGTRAP for each hit, with `slot` in the signal's data (see SlotOfEvent). Returns
// an invalid descriptor and sets errno if the kernel refuses it. The event is not inherited by other threads or by a
// program that the process becomes.
Descriptor OpenBreakpointEvent(const Breakpoint& breakpoint, int slot);

// Ends the breakpoint, even if a forked child still has the descriptor open, and closes the descriptor.
void CloseBreakpointEvent(Descriptor event);

// Returns the slot of an event whose hit raised a SIGTRAP with this data, or -1 if the event isn't one of ours.
int SlotOfEvent(unsigned long long data);

} // namespace qxplatform
