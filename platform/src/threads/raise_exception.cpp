// Exceptions raised by a program, and their vectored handlers.
#include <errhandlingapi.h>
#include <winnt.h>

#include "base/forever.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <list>
#include <mutex>
#include <new>

#include <pthread.h>

using namespace qxplatform;

namespace
{

constexpr std::size_t kMostHandlers = 64;

struct Handlers
{
    Mutex lock;
    std::list<PVECTORED_EXCEPTION_HANDLER> list; // the address of an element is its handle
};

Handlers& TheHandlers()
{
    static constinit Forever<Handlers> handlers;
    return handlers.Get();
}

// A copy of the list, because handlers may be added and removed while one of them runs. It doesn't allocate memory,
// because an exception may be raised when memory has run out.
struct PresentHandlers
{
    PresentHandlers()
    {
        Handlers& handlers = TheHandlers();
        const std::lock_guard guard(handlers.lock);
        end = std::copy(handlers.list.begin(), handlers.list.end(), array);
    }

    PVECTORED_EXCEPTION_HANDLER array[kMostHandlers];
    PVECTORED_EXCEPTION_HANDLER* end;
};

// With this exception a thread reports its name to the debugger. It is stored as the kernel's thread name (15
// characters), which debuggers show.
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

PVOID WINAPI AddVectoredExceptionHandler(ULONG First, PVECTORED_EXCEPTION_HANDLER Handler)
{
    Handlers& handlers = TheHandlers();
    const std::lock_guard guard(handlers.lock);
    const auto position = First != 0 ? handlers.list.begin() : handlers.list.end();
    try
    {
        return handlers.list.size() < kMostHandlers ? &*handlers.list.insert(position, Handler) : nullptr;
    }
    catch (const std::bad_alloc&)
    {
        return nullptr;
    }
}

ULONG WINAPI RemoveVectoredExceptionHandler(PVOID Handle)
{
    Handlers& handlers = TheHandlers();
    const std::lock_guard guard(handlers.lock);
    const auto found = std::find_if(handlers.list.begin(), handlers.list.end(),
        [Handle](const PVECTORED_EXCEPTION_HANDLER& handler) { return &handler == Handle; });
    if (found == handlers.list.end())
        return FALSE;
    handlers.list.erase(found);
    return TRUE;
}

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

    EXCEPTION_POINTERS pointers{&record, nullptr};
    const PresentHandlers handlers;
    for (const PVECTORED_EXCEPTION_HANDLER* handler = handlers.array; handler != handlers.end; ++handler)
        if ((*handler)(&pointers) == EXCEPTION_CONTINUE_EXECUTION && record.ExceptionFlags == 0)
            return;
    std::abort(); // unhandled
}
