// The child shares the memory of this process, so it must not run any code of the C library: that would use the
// thread-local data of the thread that it traces. It makes system calls only, with all signals blocked, on a stack of
// its own. It ends without a signal to the parent, so the host's SIGCHLD handler isn't called and its wait() doesn't
// find the child.
#include "watch/tracing_child.h"

#include <atomic>
#include <cerrno>
#include <cstddef>

#include <linux/futex.h>
#include <linux/ptrace.h>
#include <sched.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

namespace qxplatform
{
namespace
{

constexpr int kControl = 7; // the number of the control register
constexpr int kStatus = 6;

// Makes a system call that touches neither errno nor the stack protector's data. Returns a negative errno value on
// failure.
[[gnu::always_inline]] inline long Call(
    long number, long a = 0, long b = 0, long c = 0, long d = 0, long e = 0, long f = 0)
{
    register long r10 asm("r10") = d;
    register long r8 asm("r8") = e;
    register long r9 asm("r9") = f;
    long result;
    asm volatile("syscall"
                 : "=a"(result)
                 : "a"(number), "D"(a), "S"(b), "d"(c), "r"(r10), "r"(r8), "r"(r9)
                 : "rcx", "r11", "memory");
    return result;
}

// The task of the child, and its results.
struct Task
{
    long thread;
    bool writes;
    std::uintptr_t addresses[kBreakpointSlots];
    std::uintptr_t control;
    long status;             // out, if it doesn't write
    long result;             // out: 0 or a negative errno value
    std::atomic<int> isDone; // a futex
};

constexpr long OffsetOfRegister(int number)
{
    return static_cast<long>(offsetof(struct user, u_debugreg) + sizeof(long) * static_cast<unsigned>(number));
}

[[gnu::always_inline]] inline long Trace(long request, long thread, long address, long data)
{
    return Call(SYS_ptrace, request, thread, address, data);
}

// Writes the registers. The control register is cleared first, because the kernel refuses addresses that don't fit the
// length of an enabled breakpoint.
[[gnu::always_inline]] inline long WriteRegisters(const Task& task)
{
    long result = Trace(PTRACE_POKEUSR, task.thread, OffsetOfRegister(kControl), 0);
    for (int slot = 0; slot < kBreakpointSlots && result == 0; ++slot)
        if ((task.control >> (2 * slot) & 1) != 0)
            result =
                Trace(PTRACE_POKEUSR, task.thread, OffsetOfRegister(slot), static_cast<long>(task.addresses[slot]));
    if (result == 0)
        result = Trace(PTRACE_POKEUSR, task.thread, OffsetOfRegister(kControl), static_cast<long>(task.control));
    return result;
}

[[gnu::always_inline]] inline long ReadStatus(Task& task)
{
    const long result =
        Trace(PTRACE_PEEKUSR, task.thread, OffsetOfRegister(kStatus), reinterpret_cast<long>(&task.status));
    return result == 0 ? Trace(PTRACE_POKEUSR, task.thread, OffsetOfRegister(kStatus), 0) : result;
}

[[gnu::no_stack_protector, gnu::no_sanitize("address", "thread", "undefined")]] int RunChild(void* argument)
{
    Task& task = *static_cast<Task*>(argument);
    long result = Trace(PTRACE_SEIZE, task.thread, 0, 0);
    if (result == 0)
    {
        result = Trace(PTRACE_INTERRUPT, task.thread, 0, 0);
        int status = 0;
        while (result == 0)
        {
            const long waited = Call(SYS_wait4, task.thread, reinterpret_cast<long>(&status), __WALL);
            if (waited == task.thread)
                break;
            if (waited != -EINTR)
                result = waited;
        }
        if (result == 0)
            result = task.writes ? WriteRegisters(task) : ReadStatus(task);
        Trace(PTRACE_DETACH, task.thread, 0, 0);
    }
    task.result = result;
    __atomic_store_n(reinterpret_cast<int*>(&task.isDone), 1, __ATOMIC_RELEASE);
    Call(SYS_futex, reinterpret_cast<long>(&task.isDone), FUTEX_WAKE, 1);
    Call(SYS_exit, 0);
    return 0;
}

// Runs the child and waits for its end.
void RunOnce(Task& task)
{
    alignas(16) unsigned char stack[4096];
    task.isDone = 0;
    task.result = -EPERM; // unless the child says otherwise
    const int child = clone(RunChild, stack + sizeof stack, CLONE_VM | CLONE_FILES | CLONE_FS, &task);
    if (child < 0)
    {
        task.result = -errno;
        return;
    }
    // Stops of this thread interrupt the call. The time limit is for a child that a security filter has killed.
    const timespec limit{0, 20'000'000};
    bool isGone = false;
    while (task.isDone.load(std::memory_order_acquire) == 0 && !isGone)
        if (syscall(SYS_futex, &task.isDone, FUTEX_WAIT, 0, &limit, nullptr, 0) < 0 && errno == ETIMEDOUT)
            isGone = waitpid(child, nullptr, __WALL | WNOHANG) != 0;
    while (!isGone && waitpid(child, nullptr, __WALL) < 0 && errno == EINTR)
    {
    }
}

// Signals are blocked so that no handler runs on this thread while it is traced. SIGTRAP isn't: a hit of another
// breakpoint would end the process.
void Run(Task& task)
{
    task.thread = syscall(SYS_gettid);
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    sigdelset(&all, SIGTRAP);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    RunOnce(task);
    if (task.result == -EPERM)
    {
        // Some systems let only parents trace their children, unless the child permits it.
        prctl(PR_SET_PTRACER, PR_SET_PTRACER_ANY);
        RunOnce(task);
        prctl(PR_SET_PTRACER, 0);
    }
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

std::uintptr_t LengthCode(unsigned length)
{
    return length == 8 ? 2 : length - 1;
}

} // namespace

int WriteDebugRegistersByChild(const BreakpointSlots& slots)
{
    Task task{};
    task.writes = true;
    for (int slot = 0; slot < kBreakpointSlots; ++slot)
        if (const std::optional<Breakpoint>& breakpoint = slots[static_cast<std::size_t>(slot)])
        {
            task.addresses[slot] = breakpoint->Cell();
            const std::uintptr_t condition = breakpoint->isWriteOnly ? 1 : 3;
            task.control |= std::uintptr_t{1} << (2 * slot);
            task.control |= (condition | LengthCode(breakpoint->length) << 2) << (16 + 4 * slot);
        }
    Run(task);
    return static_cast<int>(-task.result);
}

std::optional<unsigned> TakeDebugStatusByChild()
{
    const int savedErrno = errno;
    Task task{};
    Run(task);
    errno = savedErrno;
    return task.result == 0 ? std::optional(static_cast<unsigned>(task.status & 0xF)) : std::nullopt;
}

} // namespace qxplatform
