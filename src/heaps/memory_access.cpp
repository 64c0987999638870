#include "heaps/memory_access.h"

#include <windows.h>

#include <memoryapi.h>

#include <algorithm>

namespace qx
{

std::size_t ReadCarefully(const void* address, void* buffer, std::size_t size)
{
    constexpr std::size_t kPageSize = 4096;
    std::size_t done = 0;
    while (done < size)
    {
        const std::uintptr_t from = reinterpret_cast<std::uintptr_t>(address) + done;
        const std::size_t part = std::min(kPageSize - from % kPageSize, size - done);
        SIZE_T read = 0;
        if (!ReadProcessMemory(GetCurrentProcess(), reinterpret_cast<const void*>(from),
                static_cast<char*>(buffer) + done, part, &read) ||
            read != part)
            break;
        done += part;
    }
    return done;
}

std::uint32_t ReadWordCarefully(const void* address)
{
    std::uint32_t word = 0;
    return ReadCarefully(address, &word, sizeof word) == sizeof word ? word : 0;
}

} // namespace qx
