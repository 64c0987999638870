// The mappings of the process, as the kernel lists them.
#pragma once

#include <cstdint>

namespace qxplatform
{

struct Mapping
{
    std::uintptr_t begin = 0;
    std::uintptr_t end = 0;
    bool isReadable = false;
    bool isWritable = false;
    bool isExecutable = false;
    bool isShared = false;
    bool isFile = false;
};

// Stores the first mapping that ends beyond an address: the one that contains the address, or the next one. Returns
// false if there is none or the kernel's list can't be read. Allocates nothing and takes no lock.
bool FindMapping(std::uintptr_t address, Mapping& mapping);

} // namespace qxplatform
