#include "watch/trap_signal.h"

#include "base/mutex.h"
#include "faults/dispatch.h"
#include "threads/thread_context.h"
#include "watch/breakpoint_event.h"

#include <cerrno>
#include <cstdlib>
#include <mutex>
#include <optional>

#include <signal.h>
#include <ucontext.h>

#if defined(__x86_64__)
#include "watch/debug_registers.h"
#include "watch/tracing_child.h"

#include <winnt.h>

namespace qxplatform
{
namespace
{

#ifndef TRAP_PERF
#define TRAP_PERF 6
#endif

constinit Mutex lock;
constinit bool isCaught = false;
struct sigaction previous; // set before the handler can run

// The fields of siginfo_t for TRAP_PERF, which older headers of the C library lack.
struct PerfTrap
{
    int number, error, code, padding;
    void* address;
    unsigned long data;
    unsigned type;
    unsigned flags;
};

// Returns the bits of the slots that were hit, or 0 if the signal has another cause.
unsigned SlotsOf(const siginfo_t& info)
{
    if (info.si_code == TRAP_PERF)
    {
        const int slot = SlotOfEvent(reinterpret_cast<const PerfTrap&>(info).data);
        return slot < 0 ? 0 : 1u << slot;
    }
    if (info.si_code != TRAP_HWBKPT)
        return 0;
    CONTEXT own{};
    ReadDebugRegisters(own);
    return own.Dr7 == 0 ? 0 : TakeDebugStatusByChild().value_or(0);
}

// Offers a hit to the vectored handlers and the filter. A data breakpoint stops after the instruction that made the
// access. Changes that a handler makes to the registers have no effect.
bool OfferHit(unsigned slots, const ucontext_t& user)
{
    CONTEXT context{};
    StoreContext(user, context);
    ReadDebugRegisters(context);
    context.ContextFlags |= CONTEXT_DEBUG_REGISTERS;
    context.Dr6 = slots;
    EXCEPTION_RECORD record{};
    record.ExceptionCode = EXCEPTION_SINGLE_STEP;
    record.ExceptionAddress = reinterpret_cast<PVOID>(context.Rip);
    EXCEPTION_POINTERS pointers{&record, &context};
    return Dispatch(pointers) == ExceptionOutcome::Continue;
}

void CallPrevious(int number, siginfo_t* info, void* context, bool isHit)
{
    if ((previous.sa_flags & SA_SIGINFO) != 0)
        previous.sa_sigaction(number, info, context);
    else if (previous.sa_handler == SIG_DFL && isHit)
        std::abort(); // unhandled
    else if (previous.sa_handler == SIG_DFL)
    {
        signal(number, SIG_DFL);
        raise(number); // takes effect when this handler returns
    }
    else if (previous.sa_handler != SIG_IGN)
        previous.sa_handler(number);
}

void OnTrap(int number, siginfo_t* info, void* context)
{
    const int savedErrno = errno;
    const unsigned slots = SlotsOf(*info);
    if (slots == 0 || !OfferHit(slots, *static_cast<const ucontext_t*>(context)))
        CallPrevious(number, info, context, slots != 0);
    errno = savedErrno;
}

} // namespace

void CatchTraps()
{
    const std::lock_guard guard(lock);
    if (isCaught)
        return;
    sigaction(SIGTRAP, nullptr, &previous);
    struct sigaction action
    {
    };
    action.sa_sigaction = OnTrap;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK | SA_NODEFER; // a handler may hit another breakpoint
    sigemptyset(&action.sa_mask);
    isCaught = sigaction(SIGTRAP, &action, nullptr) == 0;
}

} // namespace qxplatform

#endif
