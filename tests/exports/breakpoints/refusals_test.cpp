// Data breakpoints on linux: both ways to set them, refusals by the kernel, leaked descriptors, and the order of
// handlers.
#include "exports/breakpoints/watched.h"
#include "support/system_call_filter.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <optional>
#include <thread>
#include <vector>

#include <signal.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace watched;

namespace
{

// The kernel refuses the calls for the rest of the process.
void Forbid(const std::vector<int>& calls)
{
    if (!qxtest::LetCallsFail(calls, EPERM))
        _exit(kNotGranted);
}

// Runs the work in a child process and returns its exit code.
template <class Work>
int InChild(Work work)
{
    const pid_t child = fork();
    if (child == 0)
        _exit(work());
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
}

int CountDescriptors()
{
    return static_cast<int>(std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}));
}

std::atomic<int> childSignals = 0;

} // namespace

TEST(BreakpointsOfTheKernel, BothWaysAndNone)
{
    for (const bool byEvents : {true, false})
    {
        const int code = InChild(
            [=]
            {
                signal(SIGCHLD, [](int) { ++childSignals; });
                Forbid({byEvents ? SYS_ptrace : SYS_perf_event_open});
                const int result = UseAll();
                const bool hasChild = waitpid(-1, nullptr, WNOHANG) != -1 || errno != ECHILD;
                return result != 0 ? result : hasChild || childSignals != 0 ? 1 : 0;
            });
        EXPECT_TRUE(code == 0 || code == kNotGranted) << (byEvents ? "events: " : "tracing: ") << code;
        if (code == kNotGranted)
            std::cout << "this machine grants no breakpoints by " << (byEvents ? "events\n" : "tracing\n");
    }
    EXPECT_EQ(InChild(
                  []
                  {
                      Forbid({SYS_ptrace, SYS_perf_event_open});
                      volatile int cell = 0;
                      const HDATABP breakpoint = Watch(&cell, 4);
                      const DWORD error = GetLastError();
                      if (SlotOf(breakpoint) != -1)
                          return 1;
                      UtilRemoveDataBP(breakpoint);
                      cell = 1;
                      return error == ERROR_ACCESS_DENIED ? 0 : 2;
                  }),
        0);
}

TEST(BreakpointsOfTheKernel, NothingIsLeftBehind)
{
    if (MachineDoes() == Machine::Refuses)
        GTEST_SKIP() << "this machine grants no data breakpoints";
    const int before = CountDescriptors();
    // Not on the stack of the threads: what runs at their ends would write to it.
    static volatile std::int64_t cells[4];
    for (int i = 0; i < 2000; ++i)
        std::thread(
            []
            {
                for (volatile std::int64_t& cell : cells)
                    Abandon(Watch(&cell, 8));
            })
            .join();
    EXPECT_EQ(CountDescriptors(), before);
    EXPECT_NE(MachineDoes(), Machine::Refuses);
    volatile int cell = 0;
    const HDATABP breakpoint = Watch(&cell, 4);
    EXPECT_EQ(InChild(UseAll), 0) << "a forked child begins with free slots";
    UtilRemoveDataBP(breakpoint);
}

// Sends the signal with which the kernel reports a hit of the event in slot 0, also on machines whose breakpoints never
// fire.
void ReportHit()
{
    struct
    {
        int number, error, code, padding;
        const void* address;
        unsigned long data;
        unsigned long rest[12];
    } info{SIGTRAP, 0, 6 /* TRAP_PERF */, 0, nullptr, 0x7178574154434800, {}};
    static_assert(sizeof info == sizeof(siginfo_t));
    syscall(SYS_rt_tgsigqueueinfo, getpid(), syscall(SYS_gettid), SIGTRAP, &info);
}

// A hit that no handler accepts goes to the previous handler of the signal. If there is none, the process ends.
TEST(BreakpointsOfTheKernel, HitsAreOfferedInTurn)
{
    if (InChild([] { return MachineDoes() == Machine::Refuses ? 1 : 0; }) != 0)
        GTEST_SKIP() << "this machine grants no data breakpoints";
    struct sigaction present = {};
    sigaction(SIGTRAP, nullptr, &present);
    if (present.sa_handler != SIG_DFL)
        GTEST_SKIP() << "an earlier test of this process has set a breakpoint";
    const auto inOrder = [](bool hasSignalHandler, bool hasVectored)
    {
        return InChild(
            [=]
            {
                static volatile int own = 0;
                static volatile int cell = 0;
                if (hasSignalHandler)
                    signal(SIGTRAP, [](int) { own = own + 1; });
                Watch(&cell, 4);
                std::optional<Handler> handler;
                if (hasVectored)
                    handler.emplace();
                ReportHit();
                return static_cast<int>(own + 10 * TakeHits() + 100 * slots);
            });
    };
    EXPECT_EQ(inOrder(true, true), 110);
    EXPECT_EQ(inOrder(false, true), 110);
    EXPECT_EQ(inOrder(true, false), 1);
    EXPECT_EQ(inOrder(false, false), 1000 + SIGABRT);
    EXPECT_EQ(InChild(
                  []
                  {
                      static volatile int cell = 0;
                      Watch(&cell, 4);
                      DebugBreak(); // not a hit, so the signal's default action ends the process
                      return 0;
                  }),
        1000 + SIGTRAP);
}
