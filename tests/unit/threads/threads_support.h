// Threads for the tests.
#pragma once

#include "support/debug_lines.h"
#include "support/developer_run.h"
#include "support/leaks_allowed.h"
#include "threads/thread_base.h"

#include <gtest/gtest.h>

#include <functional>
#include <utility>

#if !defined(_WIN32) // to limit memory
#include <fstream>

#include <sys/resource.h>
#include <unistd.h>
#endif

namespace qxtest
{

constexpr DWORD kPatience = 20'000;

// Runs a function, which receives the thread object.
class TestThread : public qx::clsThreadBase
{
public:
    using Body = std::function<unsigned(TestThread&)>;

    explicit TestThread(Body body, const wchar_t* name = L"Worker") : clsThreadBase(name), _body(std::move(body)) {}
    ~TestThread() override { ThreadEnd(false, INFINITE, true); }

    unsigned ThreadProc() override { return _body(*this); }
    unsigned GetStackSize() const override { return stackSize; }
    bool WaitsPumpMessages() const override { return waitsPump; }
    bool EndPumpsMessages() const override { return endPumps; }
    bool WaitsAlertable() const override { return waitsAlertable; }

    unsigned stackSize = 0x4000;
    bool waitsPump = false, endPumps = true, waitsAlertable = false;

private:
    Body _body;
};

// The usual body: works until the thread is requested to stop.
inline unsigned UntilStopped(TestThread& thread)
{
    int result = 0;
    while (thread.WaitForEvents(INFINITE, result, 0))
    {
    }
    return 7;
}

// Ignores the request to stop.
inline unsigned Hang(TestThread&)
{
    Sleep(INFINITE);
    return 1;
}

template <class Condition>
bool WaitUntil(Condition&& condition)
{
    const ULONGLONG end = GetTickCount64() + kPatience;
    while (!condition())
    {
        if (GetTickCount64() > end)
            return false;
        Sleep(1);
    }
    return true;
}

#if !defined(_WIN32) // a limit without a counterpart on the system
// Limits the process to the given number of bytes beyond its current memory, as long as this object exists.
class MemoryBound
{
public:
    explicit MemoryBound(rlim_t bytes)
    {
        getrlimit(RLIMIT_AS, &_before);
        std::ifstream status("/proc/self/statm");
        rlim_t pages = 0;
        status >> pages;
        const rlimit bound = {pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE)) + bytes, _before.rlim_max};
        setrlimit(RLIMIT_AS, &bound);
    }
    MemoryBound(const MemoryBound&) = delete;
    MemoryBound& operator=(const MemoryBound&) = delete;
    ~MemoryBound() { setrlimit(RLIMIT_AS, &_before); }

private:
    rlimit _before = {};
};
#endif

} // namespace qxtest
