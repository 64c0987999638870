// Converts signals to exception records and contexts.
#pragma once

#include <winnt.h>

#include <signal.h>
#include <ucontext.h>

namespace qxplatform
{

// Describes the fault of a signal. Returns false if the signal is no fault of the interrupted instruction: it was sent,
// or it is the hit of a data breakpoint. Async-signal-safe.
bool DescribeFault(
    int number, const siginfo_t& info, const ucontext_t& user, EXCEPTION_RECORD& record, CONTEXT& context);

// Changes the registers with which the thread continues after the signal handler. Async-signal-safe.
void LoadContext(const CONTEXT& context, ucontext_t& user);

} // namespace qxplatform
