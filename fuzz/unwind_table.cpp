// Damaged unwind tables: finding the rule of an address and applying it to arbitrary registers.
//
// The input is the distance of the address from the table (4 bytes), a byte with flags, and the table: the index
// (.eh_frame_hdr) and the entries (.eh_frame) behind it.
#include "stack/unwinder.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

using namespace qxplatform;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    constexpr std::size_t kHead = 5;
    if (size < kHead)
        return 0;
    std::int32_t distance;
    std::memcpy(&distance, data, sizeof distance);
    bool isExact = (data[4] & 1) != 0;
    const std::vector<std::uint8_t> bytes(data + kHead, data + size); // a block of its own shows reads beyond its end
    const TableBytes all{bytes.data(), bytes.data() + bytes.size()};
    const std::uintptr_t address =
        reinterpret_cast<std::uintptr_t>(all.begin) + static_cast<std::uintptr_t>(std::intptr_t{distance});
    FrameRule rule;
    if (!FindFrameRule({all, all}, address, rule))
        return 0;
    Registers registers;
    registers.known = (data[4] & 2) != 0 ? kAllRegisters : data[4];
    for (unsigned number = 0; number < kRegisterCount; ++number)
        registers.value[number] = reinterpret_cast<std::uintptr_t>(data) + 8 * number;
    ApplyRule(rule, {all, all}, registers, isExact, StackMemory());
    return 0;
}
