// Writes call chains and modules to the debug output.
#pragma once

#include "stacks/callers.h"

namespace qx
{

// Resolves what captures need, and registers DumpCallers as the stack trace of failed assertions. Called when the
// library is loaded.
void PrepareStacks();

// Writes "%d traces" and a line for each return address of the calling thread, without the first `skip`, at most
// `count`.
void DumpCallers(unsigned skip, unsigned count);

// Writes the path of the module that contains each address, without the first `skip` addresses, and then an empty line.
void WriteCallerModules(const scCaller* entries, unsigned count, unsigned skip);

// Writes the address range and path of the first memory region of each loaded module.
void WriteModuleRegions();

} // namespace qx
