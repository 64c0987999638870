// Captures of return addresses.
#pragma once

#include <winnt.h>

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

EXTERN_C_START

// Works like RtlCaptureStackBackTrace, but begins with a function further out, which must not have returned yet. The
// system lacks this function, so callers bind it at run time.
WORD WINAPI QxCaptureFrom(const qxplatform::FrameRegisters* start, DWORD count, PVOID* addresses) QXP(QxCaptureFrom);

EXTERN_C_END
