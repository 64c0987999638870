// Finds the memory location of a variable in a stack frame.
#pragma once

#include <cstdint>
#include <optional>

#include <elfutils/libdw.h>

namespace qxplatform
{

// Adds with wraparound, because sums in damaged debug information may overflow.
constexpr std::int64_t WrappingSum(std::int64_t a, std::int64_t b)
{
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(a) + static_cast<std::uint64_t>(b));
}

struct FramePlace
{
    bool isInFrame = false;   // otherwise a static variable
    std::int64_t address = 0; // relative to the canonical frame address, or an address of the debug information
};

// Returns the place of a variable or parameter at an instruction, or nothing if it isn't in memory or if its address
// depends on the value of a register. `rules` are the unwind rules at the instruction, or null.
std::optional<FramePlace> PlaceOf(Dwarf_Die& variable, Dwarf_Die& function, Dwarf_Addr address, Dwarf_Frame* rules);

} // namespace qxplatform
