// Data breakpoints: stop the calling thread when it touches an address.
#pragma once

#include <cstdint>

namespace qx
{

// What a caller holds: the number of a slot of the processor, or kNoSlot.
using DataBreakpoint = std::int32_t;
constexpr DataBreakpoint kNoSlot = -1;

// Takes the first free slot of the calling thread. The slots in use are recorded only in the thread's debug registers.
// Returns kNoSlot on failure; the reason is written to the debug output. Sizes are 1, 2, 4 or 8 bytes.
DataBreakpoint SetDataBreakpoint(std::uint64_t address, std::uint32_t size, bool isWriteOnly);

// Frees a slot of the calling thread.
void RemoveDataBreakpoint(DataBreakpoint slot);

} // namespace qx
