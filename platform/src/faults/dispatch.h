// Passes exceptions to the vectored handlers and then to the filter.
#pragma once

#include <winnt.h>

namespace qxplatform
{

enum class ExceptionOutcome
{
    Continue, // with the registers in the context
    Unhandled,
    End // the filter wants the process to end
};

// Calls the vectored handlers and then the filter of SetUnhandledExceptionFilter. An exception while the filter runs on
// the same thread is not passed to the filter again. Takes no lock and allocates nothing.
ExceptionOutcome Dispatch(EXCEPTION_POINTERS& exception);

} // namespace qxplatform
