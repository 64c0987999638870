// How faults end on linux, and what the host sees of their handlers. Each case crashes in a forked child.
#include "threads/signal_stack.h"

#include <process.h>
#include <windows.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <iterator>
#include <string>
#include <thread>

#include <signal.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

constexpr int kSignals[] = {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGTRAP};

int report = -1; // where the child writes what happened

void Report(const char* text)
{
    if (write(report, text, std::strlen(text)) < 0)
        _exit(99);
}

// Runs the function in a child. Returns what it reported and how it ended: the signal, or "exit" and the code.
std::string InChild(const std::function<void()>& run)
{
    int ends[2];
    if (pipe(ends) != 0)
        return "no pipe";
    const pid_t child = fork();
    if (child == 0)
    {
        const rlimit noCore = {0, 0};
        setrlimit(RLIMIT_CORE, &noCore);
        alarm(20);
        report = ends[1];
        run();
        _exit(0);
    }
    close(ends[1]);
    std::string text;
    char part[100];
    for (ssize_t size; (size = read(ends[0], part, sizeof part)) > 0;)
        text.append(part, static_cast<std::size_t>(size));
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    return text + (WIFSIGNALED(status) ? std::string(strsignal(WTERMSIG(status)))
                                       : "exit " + std::to_string(WEXITSTATUS(status)));
}

LONG WINAPI ReportCode(EXCEPTION_POINTERS* exception)
{
    switch (exception->ExceptionRecord->ExceptionCode)
    {
    case EXCEPTION_STACK_OVERFLOW:
        Report("overflow, ");
        break;
    case EXCEPTION_ACCESS_VIOLATION:
        Report("access, ");
        break;
    case EXCEPTION_BREAKPOINT:
        Report("break, ");
        break;
    case EXCEPTION_IN_PAGE_ERROR:
        Report("page, ");
        break;
    default:
        Report("other, ");
    }
    return EXCEPTION_CONTINUE_SEARCH;
}

LONG WINAPI ReportAndEnd(EXCEPTION_POINTERS* exception)
{
    ReportCode(exception);
    return EXCEPTION_EXECUTE_HANDLER;
}

LONG CALLBACK PassException(EXCEPTION_POINTERS*)
{
    return EXCEPTION_CONTINUE_SEARCH;
}

// Reports an overflow if the lower half of the alternate stack, which was filled before, is unused.
char* filledStack = nullptr;
LONG WINAPI ReportUnusedHalf(EXCEPTION_POINTERS* exception)
{
    for (std::size_t at = 0; at < 32768; ++at)
        if (filledStack[at] != 'x')
            return EXCEPTION_EXECUTE_HANDLER;
    return ReportCode(exception);
}

void ReadNull()
{
    volatile char* volatile nowhere = nullptr;
    static_cast<void>(*nowhere);
}

[[gnu::noinline]] int Overflow(volatile char* previous)
{
    volatile char frame[1000];
    frame[0] = *previous;
    if (frame[0] != 0) // never
        return 0;
    return Overflow(frame) + frame[0];
}

void OverflowNow()
{
    volatile char start = 0;
    Overflow(&start);
}

void OnHostSignal(int, siginfo_t* info, void*)
{
    Report(info->si_addr == nullptr ? "host, " : "host elsewhere, ");
    _exit(3);
}

void CatchAsHost(int number)
{
    struct sigaction action = {};
    action.sa_sigaction = &OnHostSignal;
    action.sa_flags = SA_SIGINFO;
    sigaction(number, &action, nullptr);
}

// A file of one page that becomes shorter than its mapping.
void ReadBeyondEnd()
{
    const int file = memfd_create("short", 0);
    if (ftruncate(file, 4096) != 0)
        return;
    const auto page = static_cast<volatile char*>(mmap(nullptr, 4096, PROT_READ, MAP_SHARED, file, 0));
    if (ftruncate(file, 0) == 0)
        static_cast<void>(*page);
}

} // namespace

TEST(FaultsOnLinux, EndByTheTrueSignalOrInTheHostsHandler)
{
    const struct
    {
        const char* expected;
        std::function<void()> run;
    } cases[] = {
        {"access, Segmentation fault",
            []
            {
                SetUnhandledExceptionFilter(ReportCode), ReadNull();
            }},
        {"access, Segmentation fault",
            []
            {
                SetUnhandledExceptionFilter(ReportAndEnd), ReadNull();
            }},
        {"page, Bus error",
            []
            {
                SetUnhandledExceptionFilter(ReportCode), ReadBeyondEnd();
            }},
        {"break, Trace/breakpoint trap",
            []
            {
                SetUnhandledExceptionFilter(ReportCode), DebugBreak();
            }},
        {"Segmentation fault",
            []
            {
                AddVectoredExceptionHandler(1, &PassException), ReadNull();
            }},
        // Signals that are sent are no faults, and neither is the end by abort.
        {"Segmentation fault",
            []
            {
                SetUnhandledExceptionFilter(ReportCode), raise(SIGSEGV);
            }},
        {"Aborted",
            []
            {
                SetUnhandledExceptionFilter(ReportCode), std::abort();
            }},
        {"other, Aborted",
            []
            {
                SetUnhandledExceptionFilter(ReportCode), RaiseException(1, 0, 0, nullptr);
            }},
        // The filter itself crashes.
        {"access, Illegal instruction",
            []
            {
                SetUnhandledExceptionFilter(
                    [](EXCEPTION_POINTERS* exception) -> LONG
                    {
                        ReportCode(exception);
                        asm volatile("ud2");
                        return EXCEPTION_CONTINUE_SEARCH;
                    });
                ReadNull();
            }},
        // The host's handlers: installed before, and after; then ours isn't called.
        {"access, host, exit 3",
            []
            {
                CatchAsHost(SIGSEGV), SetUnhandledExceptionFilter(ReportCode), ReadNull();
            }},
        {"access, Segmentation fault",
            []
            {
                CatchAsHost(SIGSEGV), SetUnhandledExceptionFilter(ReportAndEnd), ReadNull();
            }},
        {"host, exit 3",
            []
            {
                SetUnhandledExceptionFilter(ReportCode), CatchAsHost(SIGSEGV), ReadNull();
            }},
        {"host, exit 3",
            []
            {
                SetUnhandledExceptionFilter(ReportCode);
                CatchAsHost(SIGSEGV);
                SetUnhandledExceptionFilter(nullptr); // must not remove the host's handler
                SetUnhandledExceptionFilter(ReportCode);
                ReadNull();
            }},
        {"Segmentation fault",
            []
            {
                signal(SIGSEGV, SIG_IGN), AddVectoredExceptionHandler(0, PassException), ReadNull();
            }},
    };
    for (const auto& [expected, run] : cases)
        EXPECT_EQ(InChild(run), expected) << "case " << &expected - &cases[0].expected;
}

TEST(FaultsOnLinux, StackOverflowsOnEachKindOfThread)
{
    const auto protect = []
    {
        SetUnhandledExceptionFilter(ReportCode);
    };
    EXPECT_EQ(InChild(
                  [&]
                  {
                      protect();
                      stack_t stack = {};
                      if (!QxProvideSignalStack() || sigaltstack(nullptr, &stack) != 0)
                          return;
                      filledStack = static_cast<char*>(stack.ss_sp);
                      std::memset(filledStack, 'x', stack.ss_size);
                      SetUnhandledExceptionFilter(ReportUnusedHalf);
                      OverflowNow();
                  }),
        "overflow, Segmentation fault");
    EXPECT_EQ(InChild(
                  [&]
                  {
                      protect();
                      const auto thread = _beginthreadex(
                          nullptr, 0, [](void*) -> unsigned { return OverflowNow(), 0; }, nullptr, 0, nullptr);
                      WaitForSingleObject(reinterpret_cast<HANDLE>(thread), INFINITE);
                  }),
        "overflow, Segmentation fault");
    EXPECT_EQ(InChild(
                  [&]
                  {
                      protect();
                      std::thread([] { QxProvideSignalStack(), OverflowNow(); }).join();
                  }),
        "overflow, Segmentation fault");
}

TEST(FaultsOnLinux, TheHostStaysAsItWas)
{
    struct sigaction before[std::size(kSignals)], after = {};
    for (std::size_t at = 0; at < std::size(kSignals); ++at)
        sigaction(kSignals[at], nullptr, &before[at]);
    void* const handler = AddVectoredExceptionHandler(1, &PassException);
    SetUnhandledExceptionFilter(ReportCode);
    RemoveVectoredExceptionHandler(handler);
    for (const int number : kSignals)
    {
        sigaction(number, nullptr, &after);
        EXPECT_NE(after.sa_flags & SA_ONSTACK, 0) << "the filter still needs it: " << number;
    }
    void* const again = AddVectoredExceptionHandler(1,
        [](EXCEPTION_POINTERS* exception) -> LONG
        {
            errno = EDOM;
            exception->ContextRecord->Rip += 2;
            return EXCEPTION_CONTINUE_EXECUTION;
        });
    sigset_t maskBefore = {}, maskAfter = {};
    pthread_sigmask(SIG_BLOCK, nullptr, &maskBefore);
    errno = ENOENT;
    asm volatile("ud2");
    EXPECT_EQ(errno, ENOENT);
    pthread_sigmask(SIG_BLOCK, nullptr, &maskAfter);
    EXPECT_EQ(std::memcmp(&maskBefore, &maskAfter, sizeof maskBefore), 0);
    RemoveVectoredExceptionHandler(again);
    SetUnhandledExceptionFilter(nullptr);
    for (std::size_t at = 0; at < std::size(kSignals); ++at)
    {
        sigaction(kSignals[at], nullptr, &after);
        EXPECT_EQ(after.sa_sigaction, before[at].sa_sigaction) << kSignals[at];
    }

    // An alternate stack of the thread's own is left alone, and ours vanishes with the thread.
    static char own[65536];
    static void* provided = nullptr;
    std::thread(
        []
        {
            const stack_t mine = {own, 0, sizeof own};
            stack_t present = {};
            sigaltstack(&mine, nullptr);
            EXPECT_TRUE(QxProvideSignalStack());
            sigaltstack(nullptr, &present);
            EXPECT_EQ(present.ss_sp, own);
        })
        .join();
    std::thread(
        []
        {
            stack_t present = {};
            EXPECT_TRUE(QxProvideSignalStack());
            sigaltstack(nullptr, &present);
            provided = present.ss_sp;
            EXPECT_EQ(present.ss_size, 65536u);
        })
        .join();
    EXPECT_EQ(msync(provided, 65536, MS_ASYNC), -1) << "still mapped";
}
