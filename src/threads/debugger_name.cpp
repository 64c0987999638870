#include "threads/debugger_name.h"

#include <windows.h>

#include <array>
#include <cstring>

namespace qx
{
namespace
{

constexpr DWORD kThreadNameException = 0x406D1388;

// A debugger handles the exception and continues the thread. Without a debugger, this handler does the same.
LONG CALLBACK GoOn(EXCEPTION_POINTERS* exception)
{
    return exception->ExceptionRecord->ExceptionCode == kThreadNameException ? EXCEPTION_CONTINUE_EXECUTION
                                                                             : EXCEPTION_CONTINUE_SEARCH;
}

// Installed only for the duration of a call, because this library may be unloaded at any time.
class GoOnHandler
{
public:
    GoOnHandler() : _handler(AddVectoredExceptionHandler(TRUE, &GoOn)) {}
    GoOnHandler(const GoOnHandler&) = delete;
    GoOnHandler& operator=(const GoOnHandler&) = delete;
    ~GoOnHandler() { RemoveVectoredExceptionHandler(_handler); }

    explicit operator bool() const { return _handler != nullptr; }

private:
    void* _handler;
};

} // namespace

void NameThreadForDebugger(const char* name)
{
    const struct
    {
        DWORD type;
        const char* name;
        DWORD threadId;
        DWORD flags;
    } record = {0x1000, name, 0xFFFFFFFF, 0}; // this id means the calling thread
    std::array<ULONG_PTR, sizeof record / sizeof(ULONG_PTR)> words;
    std::memcpy(words.data(), &record, sizeof record);
    const GoOnHandler handler;
    if (handler)
        RaiseException(kThreadNameException, 0, static_cast<DWORD>(words.size()), words.data());
}

} // namespace qx
