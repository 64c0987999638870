// The unwind tables of the loaded modules, found without a lock.
#pragma once

#include "stack/frame_rule.h"

#include <cstdint>

namespace qxplatform
{

struct ModuleTables
{
    std::uintptr_t begin = 0; // of the image
    std::uintptr_t end = 0;
    UnwindTable table; // empty if the module has none
    // Identifies the contents of the module, together with its place. For the program the place is enough, so its build
    // id may be empty. Null for any other module without a build id: its rules can't be cached, because they could be
    // mistaken for the rules of a module that is loaded at the same place later.
    const std::uint8_t* buildId = nullptr;
    std::uint32_t buildIdSize = 0;
};

// Stores the tables of the module that contains an address. Returns false if there is none.
bool FindModuleTables(std::uintptr_t address, ModuleTables& tables);

} // namespace qxplatform
