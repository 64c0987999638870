// Detects code of modules that were linked with the layer.
#pragma once

#include <cstdint>

namespace qxplatform
{

// Updates the list of these modules. Not async-signal-safe.
void RefreshLayerCode();

// Returns true if the address is in the code of a module that lists the layer as a dependency. This is never the case
// for the C library, its allocator, the loader, a sanitizer or the layer itself. Async-signal-safe.
bool IsInLayerCode(std::uintptr_t address);

} // namespace qxplatform
