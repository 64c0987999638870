// Captures of return addresses.
#pragma once

#include <cstdint>

namespace qxplatform
{

// The registers of the function that called the capture, as they are after the call has returned.
struct FrameRegisters
{
    std::uintptr_t stackPointer;
    std::uintptr_t framePointer;
    std::uintptr_t address; // a return address
};

// Stores addresses of the calling thread's stack, beginning with the one in `start`, and returns their number. Takes no
// lock and allocates nothing.
unsigned CaptureAddresses(const FrameRegisters& start, unsigned skip, unsigned count, void** addresses);

} // namespace qxplatform
