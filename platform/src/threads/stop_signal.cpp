#include "threads/stop_signal.h"

#include "threads/layer_code.h"
#include "threads/thread_context.h"
#include "threads/thread_object.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <ctime>
#include <exception>
#include <thread>

#include <sys/syscall.h>
#include <ucontext.h>
#include <unistd.h>

namespace qxplatform
{
namespace
{

using namespace std::chrono_literals;

int StopSignal()
{
    return SIGRTMIN + 5;
}

[[maybe_unused]] std::uintptr_t ProgramCounter(const mcontext_t& registers)
{
#if defined(__x86_64__)
    return static_cast<std::uintptr_t>(registers.gregs[REG_RIP]);
#elif defined(__aarch64__)
    return registers.pc;
#else
#error "where does this processor's context keep the program counter?"
#endif
}

// Returns true if the thread can be stopped here. Anywhere else it might hold the lock of the allocator or of the
// layer, and threads that need the lock would wait as long as the thread is stopped; if it is terminated, forever.
bool IsHarmlessPlace(const void* context)
{
#if defined(__SANITIZE_THREAD__)
    // The thread sanitizer delays signal handlers, so the reported code position is not the actual one. Threads then
    // stop only where they block.
    (void)context;
    return false;
#else
    return IsInLayerCode(ProgramCounter(static_cast<const ucontext_t*>(context)->uc_mcontext));
#endif
}

// Stores the registers for a thread that has requested them.
void AnswerContextRequest(ThreadObject& thread, const void* context)
{
    ThreadObject::ContextRequest* const request = thread.contextRequest.exchange(nullptr);
    if (request == nullptr)
        return;
    StoreContext(*static_cast<const ucontext_t*>(context), *request->context);
    std::atomic_ref(request->isDone).store(TRUE);
}

void OnStopSignal(int, siginfo_t*, void* context)
{
    ThreadObject* const thread = ThreadObject::CurrentIfKnown();
    if (thread != nullptr)
        AnswerContextRequest(*thread, context);
    if (thread == nullptr || thread->gate.IsThreadAtGate() || !thread->gate.IsClosed() || !IsHarmlessPlace(context))
        return;
    const int savedErrno = errno;
    thread->interruptedAt.store(context);
    thread->gate.Enter();
    thread->LeaveGate();
    thread->interruptedAt.store(nullptr);
    errno = savedErrno;
}

void InstallHandler()
{
    struct sigaction action
    {
    };
    action.sa_sigaction = &OnStopSignal;
    action.sa_flags = SA_SIGINFO | SA_RESTART;
    sigaction(StopSignal(), &action, nullptr);
}

bool HasArrived(const ThreadObject& thread)
{
    if (!thread.gate.IsClosed()) // the thread has been resumed
        return true;
    return thread.gate.IsEndOrdered() ? thread.HasEnded() : thread.gate.IsThreadAtGate();
}

// Returns the processor time used by the thread, or zero if it has ended.
std::chrono::nanoseconds ComputingTime(const ThreadObject& thread)
{
    // The kernel's id of the clock. The C library can't be used, because the thread may end at any moment.
    constexpr unsigned kOfThread = 4 | 2;
    timespec time{};
    clock_gettime(static_cast<clockid_t>(~thread.id() << 3 | kOfThread), &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

// Sends the signal until the thread is at its gate or has ended. Returns false if that takes longer than the given
// time. A thread that computes, mostly in foreign code, is interrupted at a safe point only by chance, so the signal is
// repeated as often as possible. A thread that blocks in foreign code may be woken by each signal; for it the pauses
// grow up to `longestPause`.
bool Drive(ThreadObject& thread, std::chrono::milliseconds time, std::chrono::microseconds longestPause)
{
    constexpr std::chrono::microseconds kShortestPause = 20us;
    constexpr std::chrono::microseconds kMoreThanSignalsCost = 50us;
    const auto end = std::chrono::steady_clock::now() + time;
    std::chrono::microseconds pause = kShortestPause;
    for (std::chrono::nanoseconds before = ComputingTime(thread), now; !HasArrived(thread); before = now)
    {
        if (std::chrono::steady_clock::now() >= end)
            return false;
        if (!thread.gate.IsThreadAtGate())
            SendStopSignal(thread);
        std::this_thread::sleep_for(pause);
        now = ComputingTime(thread);
        pause = now - before > kMoreThanSignalsCost ? kShortestPause : std::min(2 * pause, longestPause);
    }
    return true;
}

} // namespace

void AdmitStopSignal()
{
    static const bool isInstalled = (InstallHandler(), true);
    (void)isInstalled;
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, StopSignal());
    pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
}

void SendStopSignal(const ThreadObject& thread)
{
    syscall(SYS_tgkill, getpid(), static_cast<pid_t>(thread.id()), StopSignal());
}

void DriveToGate(ThreadObject& thread)
{
    if (HasArrived(thread))
        return;
    RefreshLayerCode();
    if (Drive(thread, 200ms, 2ms))
        return;
    try
    {
        std::thread(
            [kept = Ref<ThreadObject>(&thread)]
            {
                while (!Drive(*kept, 1h, 100ms))
                {
                }
            })
            .detach();
    }
    catch (const std::exception&)
    {
        // The helper thread can't be created. The request remains and takes effect when the thread reaches its gate by
        // itself.
    }
}

} // namespace qxplatform
