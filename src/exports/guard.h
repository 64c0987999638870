#pragma once

#include "core/errors/exception_report.h"

#include <cxxabi.h>

namespace qx
{

// Keeps exceptions from crossing the boundary of the library. Every exported function runs its work in Guarded. An
// exception is reported (see ReportException), and the caller gets `failure`.
//
// A callback may end its thread with pthread_exit, or be cancelled where it waits. The runtime library then unwinds the
// stack with an exception of its own, and aborts the process if a function swallows that exception. Guarded lets it
// pass, so that destructors release locks and memory.
//
//     int UtilSomething(...) { return Guarded(-1, [&] { return Something(...); }); }
template <class Failure, class Work>
auto Guarded(Failure failure, Work work) -> decltype(work())
{
    try
    {
        return work();
    }
    catch (const abi::__forced_unwind&)
    {
        throw;
    }
    catch (...)
    {
        ReportException();
    }
    return failure;
}

// For functions without a result.
template <class Work>
void Guarded(Work work)
{
    Guarded(0, [&] { return work(), 0; });
}

} // namespace qx
