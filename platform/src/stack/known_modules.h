// The modules whose rules are in the cache.
#pragma once

#include "stack/module_tables.h"

#include <cstdint>

namespace qxplatform
{

class RuleCache;

struct ModuleRange
{
    std::uintptr_t begin;
    std::uintptr_t size;

    bool Contains(std::uintptr_t address) const { return address - begin < size; }
};

// Finds the module of an address and makes sure that the cache contains no rules of another module that was loaded at
// the same place before. Returns false if there is no module or its rules can't be cached. Takes no lock. The loader
// offers no notice of unloaded modules that could be read without its lock, so the place and the build id tell modules
// apart.
bool FindKnownModule(std::uintptr_t address, RuleCache& cache, ModuleRange& range);

// Finds an address in the program or in the C library. They stay where they are while the process lives, so their rules
// are always valid. Much faster than FindKnownModule.
bool FindPermanentModule(std::uintptr_t address, ModuleRange& range);

} // namespace qxplatform
