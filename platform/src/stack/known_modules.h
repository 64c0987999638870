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
// the same place before. Returns false if there is no module or its rules can't be cached. Takes no lock:
// the loader reports unloaded modules only to callers that hold its lock, so a module is identified by its base address
// and build id.
bool FindKnownModule(std::uintptr_t address, RuleCache& cache, ModuleRange& range);

// Finds an address in the program or in the C library. Both stay in place while the process lives, so their rules are
// always valid. Much faster than FindKnownModule.
bool FindPermanentModule(std::uintptr_t address, ModuleRange& range);

} // namespace qxplatform
