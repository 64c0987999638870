#include "faults/dispatch.h"

#include <errhandlingapi.h>

#include "faults/fault_signals.h"
#include "faults/vectored_handlers.h"

#include <atomic>

namespace qxplatform
{
namespace
{

constinit std::atomic<LPTOP_LEVEL_EXCEPTION_FILTER> filter = nullptr;

// Read in signal handlers, where the loader must not allocate memory for thread-local objects.
[[gnu::tls_model("initial-exec")]] constinit thread_local bool isInFilter = false;

} // namespace

ExceptionOutcome Dispatch(EXCEPTION_POINTERS& exception)
{
    if (OfferToVectoredHandlers(exception))
        return ExceptionOutcome::Continue;
    const LPTOP_LEVEL_EXCEPTION_FILTER present = filter.load();
    if (present == nullptr)
        return ExceptionOutcome::Unhandled;
    if (isInFilter)
        return ExceptionOutcome::End;
    isInFilter = true;
    const LONG answer = present(&exception);
    isInFilter = false;
    switch (answer)
    {
    case EXCEPTION_CONTINUE_EXECUTION:
        return ExceptionOutcome::Continue;
    case EXCEPTION_EXECUTE_HANDLER:
        return ExceptionOutcome::End;
    default:
        return ExceptionOutcome::Unhandled;
    }
}

} // namespace qxplatform

using namespace qxplatform;

LPTOP_LEVEL_EXCEPTION_FILTER WINAPI SetUnhandledExceptionFilter(LPTOP_LEVEL_EXCEPTION_FILTER lpTopLevelExceptionFilter)
{
    // Signals are caught before the filter is set and until it has been removed.
    if (lpTopLevelExceptionFilter != nullptr)
        UseFaultSignals();
    const LPTOP_LEVEL_EXCEPTION_FILTER before = filter.exchange(lpTopLevelExceptionFilter);
    if (before != nullptr)
        ReleaseFaultSignals();
    return before;
}
