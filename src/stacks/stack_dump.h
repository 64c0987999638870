// Writes stacks with symbols, and the text of addresses.
#pragma once

#include "stacks/frame_text.h"

#include <cstddef>
#include <cstdint>

namespace qx
{

// Writes at most `depth` frames of the calling thread. `useThread` walks on a thread of its own. Writes nothing if
// there is no session.
void DumpStackTraceEx(int depth, bool reserved, bool useThread, clsDebugOutput& output);

// Calls `receive` with the text of each address, "module!function + offset (file, line)", in order. The text is valid
// during the call. Returns false without a session. `areExact` states that they aren't return addresses.
bool DescribeAddresses(const std::uint64_t* addresses, std::size_t count, bool areExact,
    void (*receive)(void* user, std::size_t index, const wchar_t* text), void* user);

} // namespace qx
