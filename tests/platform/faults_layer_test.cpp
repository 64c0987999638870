// How faults end on linux, and what the host sees of their handlers. Each case crashes in a forked child.
#include "threads/signal_stack.h"

#include <process.h>
#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <iterator>
#include <string>
#include <thread>
#include <utility>
#include <vector>

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
    constexpr std::pair<DWORD, const char*> kNames[] = {{EXCEPTION_STACK_OVERFLOW, "overflow, "},
        {EXCEPTION_ACCESS_VIOLATION, "access, "}, {EXCEPTION_BREAKPOINT, "break, "},
        {EXCEPTION_IN_PAGE_ERROR, "page, "}};
    const auto isOfCode = [exception](const auto& name)
    {
        return name.first == exception->ExceptionRecord->ExceptionCode;
    };
    const auto name = std::find_if(std::begin(kNames), std::end(kNames), isOfCode);
    Report(name == std::end(kNames) ? "other, " : name->second);
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

// Steps of the cases.
void Protect()
{
    SetUnhandledExceptionFilter(ReportCode);
}
void ProtectAndEnd()
{
    SetUnhandledExceptionFilter(ReportAndEnd);
}
void ProtectByACrash()
{
    SetUnhandledExceptionFilter(
        [](EXCEPTION_POINTERS* exception) -> LONG
        {
            ReportCode(exception);
            asm volatile("ud2");
            return EXCEPTION_CONTINUE_SEARCH;
        });
}
void Unprotect()
{
    SetUnhandledExceptionFilter(nullptr);
}
void PassExceptions()
{
    AddVectoredExceptionHandler(1, &PassException);
}
void CatchAsHost()
{
    struct sigaction action = {};
    action.sa_sigaction = &OnHostSignal;
    action.sa_flags = SA_SIGINFO;
    sigaction(SIGSEGV, &action, nullptr);
}
void IgnoreAsHost()
{
    signal(SIGSEGV, SIG_IGN);
}
void SendSignal()
{
    raise(SIGSEGV);
}
void RaiseOther()
{
    RaiseException(1, 0, 0, nullptr);
}

} // namespace

TEST(FaultsOnLinux, EndByTheTrueSignalOrInTheHostsHandler)
{
    const std::pair<const char*, std::vector<void (*)()>> cases[] = {
        {"access, Segmentation fault", {Protect, ReadNull}},
        {"access, Segmentation fault", {ProtectAndEnd, ReadNull}},
        {"page, Bus error", {Protect, ReadBeyondEnd}},
        {"break, Trace/breakpoint trap", {Protect, DebugBreak}},
        {"Segmentation fault", {PassExceptions, ReadNull}},
        // Signals that are sent are no faults, and neither is the end by abort.
        {"Segmentation fault", {Protect, SendSignal}},
        {"Aborted", {Protect, std::abort}},
        {"other, Aborted", {Protect, RaiseOther}},
        {"access, Illegal instruction", {ProtectByACrash, ReadNull}},
        // The host's handlers: installed before ours, and after ours, which then isn't called.
        {"access, host, exit 3", {CatchAsHost, Protect, ReadNull}},
        {"access, Segmentation fault", {CatchAsHost, ProtectAndEnd, ReadNull}},
        {"host, exit 3", {Protect, CatchAsHost, ReadNull}},
        {"host, exit 3", {Protect, CatchAsHost, Unprotect, Protect, ReadNull}}, // Unprotect leaves the host's handler
        {"Segmentation fault", {IgnoreAsHost, PassExceptions, ReadNull}},
    };
    for (const auto& [expected, steps] : cases)
    {
        const auto run = [&steps = steps]
        {
            for (void (*const step)() : steps)
                step();
        };
        EXPECT_EQ(InChild(run), expected) << "case " << &expected - &cases[0].first;
    }
}

TEST(FaultsOnLinux, StackOverflowsOnEachKindOfThread)
{
    const std::function<void()> overflows[] = {[]
        {
            stack_t stack = {};
            if (!QxProvideSignalStack() || sigaltstack(nullptr, &stack) != 0)
                return;
            filledStack = static_cast<char*>(stack.ss_sp);
            std::memset(filledStack, 'x', stack.ss_size);
            SetUnhandledExceptionFilter(ReportUnusedHalf);
            OverflowNow();
        },
        []
        {
            Protect();
            const auto thread = _beginthreadex(
                nullptr, 0, [](void*) -> unsigned { return OverflowNow(), 0; }, nullptr, 0, nullptr);
            WaitForSingleObject(reinterpret_cast<HANDLE>(thread), INFINITE);
        },
        []
        {
            Protect();
            std::thread([] { QxProvideSignalStack(), OverflowNow(); }).join();
        }};
    for (const auto& overflow : overflows)
        EXPECT_EQ(InChild(overflow), "overflow, Segmentation fault") << &overflow - overflows;
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
