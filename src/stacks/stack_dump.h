// Writes stacks with symbols.
#pragma once

#include "stacks/frame_text.h"

namespace qx
{

// Writes at most `depth` frames of the calling thread. `useThread` walks on a separate thread. Writes nothing if
// there is no session.
void DumpStackTraceEx(int depth, bool reserved, bool useThread, clsDebugOutput& output);

} // namespace qx
