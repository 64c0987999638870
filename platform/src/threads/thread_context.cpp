#include "threads/thread_context.h"

#include "base/fail.h"
#include "base/mutex.h"
#include "base/readable.h"
#include "threads/stop_signal.h"
#include "threads/thread_handles.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstring>
#include <mutex>
#include <thread>

namespace qxplatform
{

#if defined(__x86_64__)

void StoreContext(const ucontext_t& source, CONTEXT& context)
{
    const gregset_t& registers = source.uc_mcontext.gregs;
    const auto value = [&registers](int index)
    {
        return static_cast<DWORD64>(registers[index]);
    };
    context.ContextFlags = CONTEXT_FULL;
    context.Rax = value(REG_RAX);
    context.Rcx = value(REG_RCX);
    context.Rdx = value(REG_RDX);
    context.Rbx = value(REG_RBX);
    context.Rsp = value(REG_RSP);
    context.Rbp = value(REG_RBP);
    context.Rsi = value(REG_RSI);
    context.Rdi = value(REG_RDI);
    context.R8 = value(REG_R8);
    context.R9 = value(REG_R9);
    context.R10 = value(REG_R10);
    context.R11 = value(REG_R11);
    context.R12 = value(REG_R12);
    context.R13 = value(REG_R13);
    context.R14 = value(REG_R14);
    context.R15 = value(REG_R15);
    context.Rip = value(REG_RIP);
    context.EFlags = static_cast<DWORD>(value(REG_EFL));
    // The kernel stores cs, gs, fs and ss in one word.
    context.SegCs = static_cast<WORD>(value(REG_CSGSFS));
    context.SegSs = static_cast<WORD>(value(REG_CSGSFS) >> 48);
    static_assert(sizeof *source.uc_mcontext.fpregs == sizeof context.FltSave);
    if (source.uc_mcontext.fpregs != nullptr)
        std::memcpy(&context.FltSave, source.uc_mcontext.fpregs, sizeof context.FltSave);
    context.MxCsr = context.FltSave.MxCsr;
}

#elif defined(__aarch64__)

void StoreContext(const ucontext_t& source, CONTEXT& context)
{
    const mcontext_t& registers = source.uc_mcontext;
    context.ContextFlags = CONTEXT_CONTROL | CONTEXT_INTEGER;
    std::copy_n(registers.regs, std::size(context.X), context.X);
    context.Sp = registers.sp;
    context.Pc = registers.pc;
    context.Cpsr = static_cast<DWORD>(registers.pstate);
}

#endif

namespace
{

// Lets the thread itself store its registers, in the handler of the stop signal. A thread at its gate outside of that
// handler is inside a wait of the layer.
BOOL RequestContext(ThreadObject& thread, CONTEXT& context)
{
    using namespace std::chrono_literals;
    static constinit Mutex oneRequest;
    const std::lock_guard guard(oneRequest);
    ThreadObject::ContextRequest request{&context};
    const auto isDone = [&request]
    {
        return std::atomic_ref(request.isDone).load() != FALSE;
    };
    thread.contextRequest.store(&request);
    const auto end = std::chrono::steady_clock::now() + 1s;
    for (auto pause = 20us; !isDone() && std::chrono::steady_clock::now() < end; pause = std::min(2 * pause, 2000us))
    {
        SendStopSignal(thread);
        std::this_thread::sleep_for(pause);
    }
    // If the handler has taken the request, it is about to fulfil it.
    if (thread.contextRequest.exchange(nullptr) != nullptr)
        return Fail(ERROR_GEN_FAILURE);
    while (!isDone())
        std::this_thread::yield();
    return TRUE;
}

} // namespace

BOOL StoreThreadContext(ThreadObject& thread, CONTEXT& context)
{
    if (thread.HasEnded() || thread.gate.IsEndOrdered())
        return Fail(ERROR_ACCESS_DENIED);
    if (&thread == &ThreadObject::Current())
    {
        RtlCaptureContext(&context);
        return TRUE;
    }
    const void* const interruptedAt = thread.interruptedAt.load();
    if (interruptedAt == nullptr || !thread.gate.IsThreadAtGate())
        return RequestContext(thread, context);
    // Copied by the kernel, because the thread continues and may end if it is resumed now.
    ucontext_t registers;
    if (ReadMemory(reinterpret_cast<std::uintptr_t>(interruptedAt), &registers, sizeof registers) != sizeof registers)
        return Fail(ERROR_GEN_FAILURE);
#if defined(__x86_64__)
    _libc_fpstate floats;
    if (registers.uc_mcontext.fpregs != nullptr)
    {
        const auto address = reinterpret_cast<std::uintptr_t>(registers.uc_mcontext.fpregs);
        const bool isComplete = ReadMemory(address, &floats, sizeof floats) == sizeof floats;
        registers.uc_mcontext.fpregs = isComplete ? &floats : nullptr;
    }
#endif
    StoreContext(registers, context);
    return TRUE;
}

} // namespace qxplatform
