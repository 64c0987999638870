// Alternate stacks, on which signals are handled when a thread's own stack has overflowed.
#pragma once

#include <minwindef.h>

namespace qxplatform
{

// Provides the calling thread with an alternate stack of 64 KB above a guard page, unless it has one already. Returns
// true if it has one afterwards. The stack is freed when the thread ends.
bool ProvideSignalStack();

} // namespace qxplatform

EXTERN_C_START

// ProvideSignalStack for threads that the layer didn't start. Callers look it up by name, since the system lacks it.
BOOL WINAPI QxProvideSignalStack(void) QXP(QxProvideSignalStack);

EXTERN_C_END
