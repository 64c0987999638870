// Writes stacks with symbols.
#pragma once

#include "stacks/frame_text.h"

namespace qx
{

// Writes at most `depth` frames of the calling thread. `useThread` walks on a thread of its own. Writes nothing if
// there is no session.
void DumpStackTraceEx(int depth, bool reserved, bool useThread, clsDebugOutput& output);

} // namespace qx
