#include "core/errors/exception_report.h"

#include "core/debug_line.h"
#include "core/errors/exception.h"
#include "core/errors/failure_text.h"

#include <windows.h>

#include <exception>
#include <memory>
#include <new>

namespace qx
{

void ReportException()
try
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
    SetFailureText(exception.what());
    SetLastError(ERROR_INTERNAL_ERROR);
}
catch (clsException* thrown) // its messages were logged when they were added
{
    const std::unique_ptr<clsException> exception(thrown);
    SetFailureText(exception->Errors().IsEmpty() ? L"unknown exception" : exception->Errors().First()->Text());
    SetLastError(ERROR_INTERNAL_ERROR);
}
catch (...)
{
    DebugLine(L"ERR: exception in an exported function");
    SetFailureText(L"unknown exception");
    SetLastError(ERROR_INTERNAL_ERROR);
}

} // namespace qx
