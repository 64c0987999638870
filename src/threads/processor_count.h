#pragma once

namespace qx
{

// The processors of the process; at least 1.
unsigned ProcessorCount();

// How many workers a dispatcher gets: those that were asked for, or by the processors for 0; few where many dispatchers
// are alive, the new one included.
unsigned MaximumWorkers(unsigned wanted, unsigned processors, int dispatchers);

} // namespace qx
