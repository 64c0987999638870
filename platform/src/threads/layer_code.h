// Which code of the process was built on the layer.
#pragma once

#include <cstdint>

namespace qxplatform
{

// Brings the list of such code up to date. Not for a signal handler.
void RefreshLayerCode();

// Whether the address lies in the code of a module that names the layer among the libraries it needs. That is never so
// inside the C library, its allocator, the loader, a sanitizer or the layer itself. May be called by a signal handler.
bool IsInLayerCode(std::uintptr_t address);

} // namespace qxplatform
