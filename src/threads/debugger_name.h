#pragma once

namespace qx
{

// Tells the debugger, if there is one, the name of the calling thread.
void NameThreadForDebugger(const char* name);

} // namespace qx
