#pragma once

namespace qx
{

// Reports the name of the calling thread to a debugger, if one is attached.
void NameThreadForDebugger(const char* name);

} // namespace qx
