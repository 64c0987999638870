// Reads the memory of a stack.
#pragma once

#include <cstdint>

namespace qxplatform
{

// Reads 8 bytes that are known to be readable, red zones of the sanitizers included.
__attribute__((no_sanitize("address", "thread"))) inline std::uintptr_t LoadWord(std::uintptr_t address)
{
    return *reinterpret_cast<const volatile std::uintptr_t*>(address);
}

// A part of a stack that is known to be readable. Reads outside of it go through the kernel.
class StackMemory
{
public:
    // Every read goes through the kernel.
    StackMemory() = default;

    // Returns the readable part around the stack pointer of the calling thread. It is remembered while the thread
    // lives. If the thread uses another stack, for example in a signal handler, system calls determine the part each
    // time.
    static StackMemory OfThisThread(std::uintptr_t stackPointer);

    bool Contains(std::uintptr_t address) const { return address - _begin < _size && (address & 7) == 0; }

    bool Read(std::uintptr_t address, std::uintptr_t& value) const
    {
        if (!Contains(address)) [[unlikely]]
            return ReadElsewhere(address, value);
        value = LoadWord(address);
        return true;
    }

private:
    StackMemory(std::uintptr_t begin, std::uintptr_t end) : _begin(begin & ~std::uintptr_t{7}), _size(end - _begin) {}

    static bool ReadElsewhere(std::uintptr_t address, std::uintptr_t& value);

    std::uintptr_t _begin = 0;
    std::uintptr_t _size = 0; // a multiple of 8
};

} // namespace qxplatform
