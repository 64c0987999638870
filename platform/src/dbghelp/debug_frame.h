// Unwind rules from debug information (.debug_frame), for functions that have none in memory.
#pragma once

#include "dbghelp/module.h"
#include "stack/frame_rule.h"

#include <cstdint>

namespace qxplatform
{

// Stores the rule at an address. Returns false if there is none, or if the rule needs a DWARF expression.
bool FindDebugFrameRule(SymbolModule& module, std::uint64_t address, FrameRule& rule);

} // namespace qxplatform
