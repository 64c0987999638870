#include "faults/fault_record.h"

#include "base/readable.h"
#include "threads/thread_context.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>

#include <unistd.h>

namespace qxplatform
{
namespace
{

// Kinds of access, as an access violation reports them.
constexpr ULONG_PTR kRead = 0;
constexpr ULONG_PTR kWrite = 1;
constexpr ULONG_PTR kFetch = 8;

constexpr std::uintptr_t kPageSize = 4096;

#ifndef TRAP_PERF
#define TRAP_PERF 6
#endif

#if defined(__x86_64__)

constexpr int kGeneralProtection = 13; // the processor's numbers of faults
constexpr int kPageFault = 14;
constexpr int kBreakpointTrap = 3;

greg_t Register(const ucontext_t& user, int index)
{
    return user.uc_mcontext.gregs[index];
}

ULONG_PTR KindOfAccess(const ucontext_t& user)
{
    const greg_t error = Register(user, REG_ERR);
    if (Register(user, REG_TRAPNO) != kPageFault)
        return kRead;
    return (error & 0x10) != 0 ? kFetch : (error & 2) != 0 ? kWrite : kRead;
}

bool HasAddress(const ucontext_t& user)
{
    return Register(user, REG_TRAPNO) == kPageFault;
}

std::uintptr_t StackPointer(const CONTEXT& context)
{
    return context.Rsp;
}

DWORD64& InstructionPointer(CONTEXT& context)
{
    return context.Rip;
}

// Recognises privileged instructions and those that access ports, by their first byte, or by their second if the first
// is 0F.
bool IsPrivileged(std::uintptr_t address)
{
    std::uint8_t code[15] = {};
    const std::size_t size = ReadMemory(address, code, sizeof code);
    std::size_t at = 0;
    const auto isPrefix = [](std::uint8_t byte)
    {
        constexpr std::uint8_t kPrefixes[] = {0x26, 0x2E, 0x36, 0x3E, 0x64, 0x65, 0x66, 0x67, 0xF0, 0xF2, 0xF3};
        return (byte & 0xF0) == 0x40 ||
               std::find(std::begin(kPrefixes), std::end(kPrefixes), byte) != std::end(kPrefixes);
    };
    while (at < size && isPrefix(code[at]))
        ++at;
    if (at + 1 >= size)
        return false;
    constexpr std::uint8_t kShort[] = {
        0x6C, 0x6D, 0x6E, 0x6F, 0xE4, 0xE5, 0xE6, 0xE7, 0xEC, 0xED, 0xEE, 0xEF, 0xF4, 0xFA, 0xFB};
    constexpr std::uint8_t kLong[] = {
        0x00, 0x01, 0x06, 0x07, 0x08, 0x09, 0x20, 0x21, 0x22, 0x23, 0x30, 0x32, 0x33, 0x35};
    const auto contains = [](const auto& list, std::uint8_t byte)
    {
        return std::find(std::begin(list), std::end(list), byte) != std::end(list);
    };
    return code[at] == 0x0F ? contains(kLong, code[at + 1]) : contains(kShort, code[at]);
}

bool IsGeneralProtection(const ucontext_t& user)
{
    return Register(user, REG_TRAPNO) == kGeneralProtection;
}

// The processor stops behind a breakpoint instruction. Moves the instruction pointer back to it.
void StepBackToBreakpoint(const ucontext_t& user, CONTEXT& context)
{
    if (Register(user, REG_TRAPNO) == kBreakpointTrap)
        --context.Rip;
}

#else

ULONG_PTR KindOfAccess(const ucontext_t&)
{
    return kRead;
}

bool HasAddress(const ucontext_t&)
{
    return true;
}

std::uintptr_t StackPointer(const CONTEXT& context)
{
    return context.Sp;
}

DWORD64& InstructionPointer(CONTEXT& context)
{
    return context.Pc;
}

bool IsPrivileged(std::uintptr_t)
{
    return false;
}

bool IsGeneralProtection(const ucontext_t&)
{
    return false;
}

void StepBackToBreakpoint(const ucontext_t&, CONTEXT&) {}

#endif

// Returns true if an access near the stack pointer fell below the stack: into a page that can't be read, a little below
// one that can. Compilers touch large frames page by page, so an overflow can't jump over the guard pages.
bool IsStackOverflow(std::uintptr_t address, std::uintptr_t stackPointer)
{
    constexpr std::uintptr_t kNear = 64 << 10;
    constexpr std::uintptr_t kMostGuardPages = 16;
    if (address - (stackPointer - kNear) > 2 * kNear || IsReadable(address & ~std::uintptr_t{3}))
        return false;
    const std::uintptr_t page = address & ~(kPageSize - 1);
    for (std::uintptr_t above = 1; above <= kMostGuardPages; ++above)
        if (IsReadable(page + above * kPageSize))
            return true;
    return false;
}

void SetParameters(EXCEPTION_RECORD& record, std::initializer_list<ULONG_PTR> parameters)
{
    record.NumberParameters = static_cast<DWORD>(parameters.size());
    std::copy(parameters.begin(), parameters.end(), record.ExceptionInformation);
}

void DescribeBadAccess(const siginfo_t& info, const ucontext_t& user, EXCEPTION_RECORD& record, const CONTEXT& context)
{
    const auto address = reinterpret_cast<std::uintptr_t>(info.si_addr);
    record.ExceptionCode = EXCEPTION_ACCESS_VIOLATION;
    if (IsGeneralProtection(user) && IsPrivileged(reinterpret_cast<std::uintptr_t>(record.ExceptionAddress)))
        record.ExceptionCode = EXCEPTION_PRIV_INSTRUCTION;
    else if (!HasAddress(user))
        SetParameters(record, {kRead, ~ULONG_PTR{0}});
    else
    {
        if (IsStackOverflow(address, StackPointer(context)))
            record.ExceptionCode = EXCEPTION_STACK_OVERFLOW;
        SetParameters(record, {KindOfAccess(user), address});
    }
}

void DescribeBusError(const siginfo_t& info, const ucontext_t& user, EXCEPTION_RECORD& record)
{
    constexpr ULONG_PTR kEndOfFile = 0xC0000011;
    record.ExceptionCode = info.si_code == BUS_ADRALN ? EXCEPTION_DATATYPE_MISALIGNMENT : EXCEPTION_IN_PAGE_ERROR;
    if (info.si_code != BUS_ADRALN)
        SetParameters(record, {KindOfAccess(user), reinterpret_cast<ULONG_PTR>(info.si_addr), kEndOfFile});
}

DWORD CodeOfArithmetic(int code)
{
    switch (code)
    {
    case FPE_INTDIV:
        return EXCEPTION_INT_DIVIDE_BY_ZERO;
    case FPE_INTOVF:
        return EXCEPTION_INT_OVERFLOW;
    case FPE_FLTDIV:
        return EXCEPTION_FLT_DIVIDE_BY_ZERO;
    case FPE_FLTOVF:
        return EXCEPTION_FLT_OVERFLOW;
    case FPE_FLTUND:
        return EXCEPTION_FLT_UNDERFLOW;
    case FPE_FLTRES:
        return EXCEPTION_FLT_INEXACT_RESULT;
    default:
        return EXCEPTION_FLT_INVALID_OPERATION;
    }
}

} // namespace

bool DescribeFault(
    int number, const siginfo_t& info, const ucontext_t& user, EXCEPTION_RECORD& record, CONTEXT& context)
{
    // A thread sends itself SIGTRAP for a breakpoint (DebugBreak).
    const bool isOwnBreak = number == SIGTRAP && info.si_code == SI_TKILL && info.si_pid == getpid();
    if (info.si_code <= 0 && !isOwnBreak)
        return false;
    StoreContext(user, context);
    if (number == SIGTRAP)
    {
        if (info.si_code == TRAP_PERF || info.si_code == TRAP_HWBKPT)
            return false;
        if (!isOwnBreak)
            StepBackToBreakpoint(user, context);
    }
    record.ExceptionAddress = reinterpret_cast<PVOID>(InstructionPointer(context));
    switch (number)
    {
    case SIGSEGV:
        DescribeBadAccess(info, user, record, context);
        break;
    case SIGBUS:
        DescribeBusError(info, user, record);
        break;
    case SIGILL:
        record.ExceptionCode = EXCEPTION_ILLEGAL_INSTRUCTION;
        break;
    case SIGFPE:
        record.ExceptionCode = CodeOfArithmetic(info.si_code);
        break;
    default:
        record.ExceptionCode = info.si_code == TRAP_TRACE ? EXCEPTION_SINGLE_STEP : EXCEPTION_BREAKPOINT;
        if (record.ExceptionCode == EXCEPTION_BREAKPOINT)
            SetParameters(record, {0});
        break;
    }
    return true;
}

#if defined(__x86_64__)

void LoadContext(const CONTEXT& context, ucontext_t& user)
{
    gregset_t& registers = user.uc_mcontext.gregs;
    const std::pair<int, DWORD64> values[] = {{REG_RAX, context.Rax}, {REG_RCX, context.Rcx}, {REG_RDX, context.Rdx},
        {REG_RBX, context.Rbx}, {REG_RSP, context.Rsp}, {REG_RBP, context.Rbp}, {REG_RSI, context.Rsi},
        {REG_RDI, context.Rdi}, {REG_R8, context.R8}, {REG_R9, context.R9}, {REG_R10, context.R10},
        {REG_R11, context.R11}, {REG_R12, context.R12}, {REG_R13, context.R13}, {REG_R14, context.R14},
        {REG_R15, context.R15}, {REG_RIP, context.Rip}, {REG_EFL, context.EFlags}};
    for (const auto& [index, value] : values)
        registers[index] = static_cast<greg_t>(value);
    const auto state = reinterpret_cast<unsigned char*>(user.uc_mcontext.fpregs);
    if (state == nullptr)
        return;
    // The control word is in the context twice, and either may have been changed.
    XMM_SAVE_AREA32 wanted = context.FltSave;
    if (context.MxCsr != user.uc_mcontext.fpregs->mxcsr)
        wanted.MxCsr = context.MxCsr;
    if (std::memcmp(state, &wanted, sizeof wanted) == 0)
        return;
    // The last 48 bytes belong to the kernel: they say whether a header of further state follows, in which the first
    // two bits mark the registers copied here as valid.
    constexpr std::size_t kKernelsPart = 464;
    constexpr std::uint32_t kMagic = 0x46505853;
    std::uint32_t magic = 0;
    std::memcpy(state, &wanted, kKernelsPart);
    std::memcpy(&magic, state + kKernelsPart, sizeof magic);
    if (magic == kMagic)
        state[sizeof wanted] |= 3;
}

#else

void LoadContext(const CONTEXT& context, ucontext_t& user)
{
    mcontext_t& registers = user.uc_mcontext;
    std::copy(std::begin(context.X), std::end(context.X), registers.regs);
    registers.sp = context.Sp;
    registers.pc = context.Pc;
    registers.pstate = context.Cpsr;
}

#endif

} // namespace qxplatform
