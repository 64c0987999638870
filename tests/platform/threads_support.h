// Helpers shared by the tests of threads, waits and messages.
#pragma once

#include "support/leaks_allowed.h"
#include "system_support.h"

#include <process.h>

#include <cstdlib>
#include <functional>
#include <memory>
#include <utility>

namespace qxtest
{

constexpr DWORD kPatience = 20'000;

// True if the layer can stop a thread that computes. Under the thread sanitizer it can stop only blocked threads.
#if defined(__SANITIZE_THREAD__)
constexpr bool kCanStopComputing = false;
#else
constexpr bool kCanStopComputing = true;
#endif

class Event : public Handle
{
public:
    explicit Event(bool isManual = true) : Handle(CreateEventW(nullptr, isManual, FALSE, nullptr)) {}
};

// Runs a function on a thread as long as this object exists.
class Thread : public Handle
{
public:
    using Function = std::function<unsigned()>;

    explicit Thread(Function function, unsigned flags = 0, unsigned stackSize = 0)
    {
        Handle::operator=(reinterpret_cast<HANDLE>(
            _beginthreadex(nullptr, stackSize, &Run, new Function(std::move(function)), flags, &_id)));
    }

    ~Thread() { Join(); }

    DWORD id() const { return _id; }

    // Returns the exit code. If the thread doesn't end, the process is aborted, because the thread may access objects
    // of the finished test.
    DWORD Join() const
    {
        if (WaitForSingleObject(*this, kPatience) != WAIT_OBJECT_0)
        {
            ADD_FAILURE() << "thread " << id() << " doesn't end";
            std::abort();
        }
        DWORD code = 0xBEEF;
        EXPECT_TRUE(GetExitCodeThread(*this, &code));
        return code;
    }

private:
    // The function object must outlive a thread that is terminated.
    static unsigned __stdcall Run(void* argument)
    {
        static thread_local std::unique_ptr<Function> function;
        function.reset(static_cast<Function*>(argument));
        return (*function)();
    }

    unsigned _id = 0;
};

} // namespace qxtest
