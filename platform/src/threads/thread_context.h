// The registers of other threads.
#pragma once

#include <winnt.h>

#include <ucontext.h>

namespace qxplatform
{

// Converts the registers that the kernel stored for a signal handler. Async-signal-safe.
void StoreContext(const ucontext_t& source, CONTEXT& context);

} // namespace qxplatform
