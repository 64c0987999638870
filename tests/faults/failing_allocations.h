// Makes allocations of this program and its libraries fail. The program's own malloc and its kin take the place of the
// C library's in all of them.
#pragma once

namespace faulttest
{

// Lets the allocation of that number fail, counted from 1 in all threads from now on, and with `also` all after it. 0
// ends the failures. The test's own allocations count too.
void FailAllocation(long number, bool also = false);

// Returns true if an allocation has failed since the failures last began.
bool HasFailed();

// Returns how many blocks are allocated.
long LiveBlocks();

} // namespace faulttest
