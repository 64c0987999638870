// Lists the loaded modules of this process.
#pragma once

#include "core/text/string.h"

#include <cstdint>
#include <vector>

namespace qx
{

struct LoadedModule
{
    std::uint64_t base = 0;
    std::uint32_t size = 0;
};

// Both return nothing if the system lacks the functions.
std::vector<LoadedModule> ModulesOfSnapshot();
std::vector<LoadedModule> ModulesOfProcess();

// The file, name and size of a module. Texts are empty and the size is 0 if the system doesn't report them.
struct ModuleFacts
{
    String path;
    String name;
    std::uint32_t size = 0;
};
ModuleFacts FactsOfModule(std::uint64_t base);

} // namespace qx
