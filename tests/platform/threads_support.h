// What the tests of threads, waits and messages share.
#pragma once

#include "support/leaks_allowed.h"
#include "system_support.h"

#include <process.h>

#include <functional>
#include <memory>
#include <utility>

namespace qxtest
{

constexpr DWORD patience = 20'000;

// Whether the layer can stop a thread that computes; under the thread sanitizer it stops where it blocks.
#if defined(__SANITIZE_THREAD__)
constexpr bool canStopComputing = false;
#else
constexpr bool canStopComputing = true;
#endif

inline DWORD ExitCodeOf(HANDLE thread)
{
    DWORD code = 0xBEEF;
    EXPECT_TRUE(GetExitCodeThread(thread, &code));
    return code;
}

class Event : public Handle
{
public:
    explicit Event(bool isManual = true, bool isSet = false) : Handle(CreateEventW(nullptr, isManual, isSet, nullptr))
    {
    }
};

// Runs a function; the handle is closed at the end, which doesn't wait.
class Thread : public Handle
{
public:
    using Function = std::function<unsigned()>;

    explicit Thread(Function function, unsigned flags = 0, unsigned stackSize = 0)
        : Handle(reinterpret_cast<HANDLE>(
              _beginthreadex(nullptr, stackSize, &Run, new Function(std::move(function)), flags, nullptr)))
    {
    }

    DWORD id() const { return GetThreadId(*this); }

    // The exit code.
    DWORD Join() const
    {
        EXPECT_EQ(WaitForSingleObject(*this, patience), DWORD{WAIT_OBJECT_0});
        return ExitCodeOf(*this);
    }

private:
    // The function's object outlives a thread that is terminated.
    static unsigned __stdcall Run(void* argument)
    {
        static thread_local std::unique_ptr<Function> function;
        function.reset(static_cast<Function*>(argument));
        return (*function)();
    }
};

} // namespace qxtest
