// Makes allocations of this program and its libraries fail. The program's malloc and related functions replace those of
// the C library in all modules.
#pragma once

namespace faulttest
{

// Makes the allocation with the given number fail, counted from 1 over all threads from now on. With `also`, all later
// allocations fail too. 0 ends the failures. Allocations of the test itself count too.
void FailAllocation(long number, bool also = false);

// Returns true if an allocation has failed since the last call of FailAllocation with a number above 0.
bool HasFailed();

// Returns the number of blocks that are currently allocated.
long LiveBlocks();

} // namespace faulttest
