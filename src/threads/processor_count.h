#pragma once

namespace qx
{

// Returns the number of processors that the process may use, at least 1.
unsigned ProcessorCount();

// Returns the maximum number of workers of a new dispatcher: `wanted`, or one less than `processors` if `wanted` is 0.
// The result is at most 2 if more than 10 dispatchers exist, including the new one.
unsigned MaximumWorkers(unsigned wanted, unsigned processors, int dispatchers);

} // namespace qx
