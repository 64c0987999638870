// Captures the return addresses of the calling thread.
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

// The place where a capture begins: the return address of a function of the library, and the registers after the
// return. The Linux layer relies on the order of the fields.
struct CallSite
{
    // Use the result only while the function that called this one is still running.
    [[gnu::always_inline]] static CallSite OfThisFunction()
    {
        const auto* const frame = static_cast<const std::uintptr_t*>(__builtin_frame_address(0));
        CallSite site(__builtin_return_address(0));
        site.stackPointer = reinterpret_cast<std::uintptr_t>(frame + 2);
        site.framePointer = frame[0];
        return site;
    }

    CallSite(const void* returnAddress) : address(const_cast<void*>(returnAddress)) {}

    std::uintptr_t stackPointer = 0; // 0 if the registers aren't known
    std::uintptr_t framePointer = 0;
    void* address;
};

// Stores return addresses, innermost first. The first is the address to which this call returns. Writes only the field
// `address`. Returns the number of entries: at most `count`, and at most 200 (61 on systems before version 6.0), or 0
// if the system lacks the function.
//
// Allocates nothing and takes no lock. The first call resolves the system's function, so the library calls
// PrepareCaptures when it is loaded.
unsigned CaptureCallers(scCaller* entries, unsigned count) noexcept;
void PrepareCaptures();

// Stores return addresses, beginning with the call site's, and returns their number. Returns 0 if the system can't
// begin a walk at a call site.
unsigned CaptureFrom(const CallSite& site, void** addresses, unsigned count) noexcept;

} // namespace qx
