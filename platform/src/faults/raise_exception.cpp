// Exceptions raised by a program.
#include <errhandlingapi.h>
#include <winnt.h>

#include "faults/dispatch.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include <pthread.h>

using namespace qxplatform;

namespace
{

// If the exception reports a thread's name to the debugger, stores it as the kernel's thread name (15 characters),
// which debuggers show.
void TakeThreadName(const EXCEPTION_RECORD& record)
{
    struct ThreadName
    {
        DWORD type;
        const char* name;
        DWORD threadId;
        DWORD flags;
    };
    constexpr DWORD kThreadNameCode = 0x406D1388;
    constexpr DWORD kThisThread = 0xFFFFFFFF;
    ThreadName name{};
    if (record.ExceptionCode != kThreadNameCode || record.NumberParameters * sizeof(ULONG_PTR) < sizeof name)
        return;
    std::memcpy(&name, record.ExceptionInformation, sizeof name);
    if (name.type != 0x1000 || name.threadId != kThisThread || name.name == nullptr)
        return;
    char text[16] = {};
    std::strncpy(text, name.name, sizeof text - 1);
    pthread_setname_np(pthread_self(), text);
}

} // namespace

void WINAPI RaiseException(
    DWORD dwExceptionCode, DWORD dwExceptionFlags, DWORD nNumberOfArguments, const ULONG_PTR* lpArguments)
{
    EXCEPTION_RECORD record{};
    record.ExceptionCode = dwExceptionCode;
    record.ExceptionFlags = dwExceptionFlags & EXCEPTION_NONCONTINUABLE;
    record.ExceptionAddress = __builtin_return_address(0);
    if (lpArguments != nullptr)
    {
        record.NumberParameters = std::min<DWORD>(nNumberOfArguments, EXCEPTION_MAXIMUM_PARAMETERS);
        std::copy_n(lpArguments, record.NumberParameters, record.ExceptionInformation);
    }
    TakeThreadName(record);

    // Changes of the registers have no effect.
    CONTEXT context{};
    RtlCaptureContext(&context);
    EXCEPTION_POINTERS pointers{&record, &context};
    if (Dispatch(pointers) != ExceptionOutcome::Continue || record.ExceptionFlags != 0)
        std::abort(); // unhandled
}
