#pragma once

#include "core/debug_line.h"
#include "core/errors/failure_text.h"

#include <windows.h>

#include <cxxabi.h>

#include <exception>
#include <new>
#include <utility>

namespace qx
{

// Keeps exceptions from crossing the boundary of the library. Every exported function runs its work in Guarded. An
// exception is logged, the last error is set according to its kind, and the caller gets `failure`.
//
// A callback may end its thread with pthread_exit, or be cancelled where it waits. The runtime
// library then unwinds the stack with an exception of its own, and aborts the process if a function swallows that
// exception. Guarded lets it pass, so that destructors release locks and memory.
//
//     int UtilSomething(...) { return Guarded(-1, [&] { return Something(...); }); }
//
// The runtime library's exception has no object, which the sanitizer would report.
template <class Failure, class Work>
__attribute__((no_sanitize("null"))) auto Guarded(Failure failure, Work work) -> decltype(work())
{
    try
    {
        return work();
    }
    catch (const abi::__forced_unwind&)
    {
        throw;
    }
    catch (const std::bad_alloc&)
    {
        DebugLine(L"ERR: out of memory in an exported function");
        SetFailureText(L"out of memory");
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    }
    catch (const std::exception& exception)
    {
        DebugLine(L"ERR: exception in an exported function: %hs", exception.what());
        SetLastError(ERROR_INTERNAL_ERROR);
    }
    catch (...)
    {
        DebugLine(L"ERR: exception in an exported function");
        SetLastError(ERROR_INTERNAL_ERROR);
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
