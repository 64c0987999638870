// The registers of other threads.
#pragma once

#include <winnt.h>

#include <ucontext.h>

namespace qxplatform
{

// Converts the registers that the kernel stored for a signal handler. Async-signal-safe.
void StoreContext(const ucontext_t& source, CONTEXT& context);

class ThreadObject;

// Stores the registers of a thread, whether it runs or not, and the flags that say which registers are stored. Sets the
// last error on failure.
BOOL StoreThreadContext(ThreadObject& thread, CONTEXT& context);

} // namespace qxplatform
