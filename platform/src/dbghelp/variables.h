// The parameters and local variables of a function at an instruction.
#pragma once

#include "dbghelp/module.h"

#include <cstdint>
#include <string>
#include <vector>

namespace qxplatform
{

struct Variable
{
    std::string name;
    bool isParameter = false;
    bool isInFrame = false;    // the address is relative to the frame base of the interface
    std::uint64_t address = 0; // 0 if the variable isn't in memory or its address can't be determined
    std::uint32_t type = 0;
    std::uint64_t size = 0;
};

// Returns the parameters in the order of their declaration and then the local variables, innermost scope first.
// Variables of inlined functions aren't listed.
std::vector<Variable> ListVariables(SymbolModule& module, std::uint64_t address);

} // namespace qxplatform
