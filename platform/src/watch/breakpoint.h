// A data breakpoint as a debug register describes it.
#pragma once

#include <cstdint>

namespace qxplatform
{

constexpr int kBreakpointSlots = 4;

struct Breakpoint
{
    std::uintptr_t address;
    unsigned length;  // 1, 2, 4 or 8 bytes
    bool isWriteOnly; // otherwise reads count too

    // The processor watches whole cells of this length.
    std::uintptr_t Cell() const { return address & ~std::uintptr_t{length - 1}; }

    friend bool operator==(const Breakpoint&, const Breakpoint&) = default;
};

} // namespace qxplatform
