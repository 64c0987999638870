#include "faults/fault_signals.h"

#include "base/mutex.h"
#include "faults/dispatch.h"
#include "faults/fault_record.h"

#include <cerrno>
#include <mutex>

#include <signal.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace qxplatform
{
namespace
{

struct Caught
{
    int number;
    bool isInstalled = false; // also true if it can't be removed because of a later handler
    struct sigaction previous = {};
};

constinit Mutex usersLock; // guards the data below; the handlers read `previous` without it
constinit int users = 0;
constinit Caught caughtSignals[] = {{SIGSEGV}, {SIGBUS}, {SIGILL}, {SIGFPE}, {SIGTRAP}};

const Caught& CaughtOf(int number)
{
    const Caught* caught = caughtSignals;
    while (caught->number != number)
        ++caught;
    return *caught;
}

// Lets the signal take its default action when the handler returns. An instruction that faulted faults again; the
// signal of a breakpoint, or of another process, is sent again.
void EndByDefault(int number, const siginfo_t& info)
{
    struct sigaction action = {};
    action.sa_handler = SIG_DFL;
    sigaction(number, &action, nullptr);
    if (number == SIGTRAP || info.si_code <= 0)
        syscall(SYS_tgkill, getpid(), syscall(SYS_gettid), number);
}

void PassToPrevious(int number, siginfo_t* info, void* context)
{
    const struct sigaction& previous = CaughtOf(number).previous;
    if ((previous.sa_flags & SA_SIGINFO) != 0)
    {
        previous.sa_sigaction(number, info, context);
        return;
    }
    // A fault can't be ignored; the kernel would end the process, too.
    if (previous.sa_handler == SIG_DFL || (previous.sa_handler == SIG_IGN && info->si_code > 0))
        EndByDefault(number, *info);
    else if (previous.sa_handler != SIG_IGN)
        previous.sa_handler(number);
}

// The host's handler runs with the mask with which the kernel would have called it.
class MaskOf
{
public:
    MaskOf(int number, const struct sigaction& action, const ucontext_t& user)
    {
        sigset_t mask;
        sigorset(&mask, &user.uc_sigmask, &action.sa_mask);
        if ((action.sa_flags & SA_NODEFER) == 0)
            sigaddset(&mask, number);
        pthread_sigmask(SIG_SETMASK, &mask, &_before);
    }
    ~MaskOf() { pthread_sigmask(SIG_SETMASK, &_before, nullptr); }
    MaskOf(const MaskOf&) = delete;
    MaskOf& operator=(const MaskOf&) = delete;

private:
    sigset_t _before;
};

ExceptionOutcome Handle(int number, const siginfo_t& info, ucontext_t& user)
{
    EXCEPTION_RECORD record{};
    CONTEXT context{};
    if (!DescribeFault(number, info, user, record, context))
        return ExceptionOutcome::Unhandled;
    EXCEPTION_POINTERS pointers{&record, &context};
    const ExceptionOutcome outcome = Dispatch(pointers);
    if (outcome == ExceptionOutcome::Continue)
        LoadContext(context, user);
    return outcome;
}

void OnFault(int number, siginfo_t* info, void* context)
{
    const int error = errno;
    switch (Handle(number, *info, *static_cast<ucontext_t*>(context)))
    {
    case ExceptionOutcome::Continue:
        break;
    case ExceptionOutcome::End:
        EndByDefault(number, *info);
        break;
    case ExceptionOutcome::Unhandled:
    {
        const MaskOf mask(number, CaughtOf(number).previous, *static_cast<ucontext_t*>(context));
        errno = error;
        PassToPrevious(number, info, context);
        break;
    }
    }
    errno = error;
}

bool IsOurs(const struct sigaction& action)
{
    return (action.sa_flags & SA_SIGINFO) != 0 && action.sa_sigaction == &OnFault;
}

} // namespace

void UseFaultSignals()
{
    const std::lock_guard guard(usersLock);
    if (users++ != 0)
        return;
    for (Caught& caught : caughtSignals)
    {
        if (caught.isInstalled)
            continue;
        struct sigaction action = {};
        action.sa_sigaction = &OnFault;
        action.sa_flags = SA_SIGINFO | SA_ONSTACK;
        // A vectored handler may hit a breakpoint. A second fault of another kind ends the process at once.
        if (caught.number == SIGTRAP)
            action.sa_flags |= SA_NODEFER;
        sigemptyset(&action.sa_mask);
        // The previous handler is stored first, because ours may run at once.
        caught.isInstalled =
            sigaction(caught.number, nullptr, &caught.previous) == 0 && sigaction(caught.number, &action, nullptr) == 0;
    }
}

void ReleaseFaultSignals()
{
    const std::lock_guard guard(usersLock);
    if (--users != 0)
        return;
    for (Caught& caught : caughtSignals)
    {
        struct sigaction present = {};
        if (caught.isInstalled && sigaction(caught.number, nullptr, &present) == 0 && IsOurs(present))
            caught.isInstalled = sigaction(caught.number, &caught.previous, nullptr) != 0;
    }
}

} // namespace qxplatform
