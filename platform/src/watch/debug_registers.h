// The calling thread's debug registers.
#pragma once

#include <winnt.h>

namespace qxplatform
{

// Stores Dr0 to Dr7 as the last SetThreadContext has set them. Breakpoints that a debugger has set aren't visible.
// Returns false on processors with debug registers of another kind.
bool ReadDebugRegisters(CONTEXT& context);

} // namespace qxplatform
