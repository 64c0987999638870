// The registers of a frame by their numbers in unwind tables.
#pragma once

#include <winnt.h>

#include <cstdint>

namespace qxplatform
{

#if defined(__x86_64__)
constexpr unsigned kRegisterCount = 17;
constexpr unsigned kFramePointer = 6;
constexpr unsigned kStackPointer = 7;
constexpr unsigned kProgramCounter = 16; // also the column of the return address
// A call stores its return address on top of the stack.
constexpr std::uintptr_t kReturnAddressSize = 8;
#elif defined(__aarch64__)
constexpr unsigned kRegisterCount = 33;
constexpr unsigned kFramePointer = 29;
constexpr unsigned kLinkRegister = 30;
constexpr unsigned kStackPointer = 31;
constexpr unsigned kProgramCounter = 32;
constexpr std::uintptr_t kReturnAddressSize = 0; // a call stores it in the link register
#endif

struct Registers
{
    std::uintptr_t value[kRegisterCount];
    std::uint64_t known; // a bit for each register that has a value

    bool Has(unsigned number) const { return number < kRegisterCount && (known >> number & 1) != 0; }
    void Set(unsigned number, std::uintptr_t newValue)
    {
        value[number] = newValue;
        known |= std::uint64_t{1} << number;
    }
};

constexpr std::uint64_t kAllRegisters = (std::uint64_t{1} << kRegisterCount) - 1;

Registers RegistersOf(const CONTEXT& context);
void StoreRegisters(const Registers& registers, CONTEXT& context);

} // namespace qxplatform
