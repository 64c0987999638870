// The return addresses of the calling thread.
#pragma once

#include <cstddef>
#include <cstdint>

namespace qx
{

// An entry of a call chain. Other modules read arrays of these.
struct scCaller
{
    void* reserved;
    void* address; // the return address
    void* reserved2;
};

static_assert(sizeof(scCaller) == 24 && offsetof(scCaller, address) == 8);

// Stores return addresses, innermost first. The first is the address to which this call returns. Writes only the field
// `address`. Returns the number of entries: at most `count`, and at most 200 (61 on systems before version 6.0), or 0
// if the system lacks the function.
//
// Allocates nothing and takes no lock. The first call resolves the system's function, so the library calls
// PrepareCaptures when it is loaded.
unsigned CaptureCallers(scCaller* entries, unsigned count) noexcept;
void PrepareCaptures();

} // namespace qx
