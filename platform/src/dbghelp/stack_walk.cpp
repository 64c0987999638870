#include <dbghelp.h>
#include <errhandlingapi.h>
#include <winerror.h>

#include "dbghelp/debug_frame.h"
#include "dbghelp/sessions.h"
#include "stack/given_rule.h"
#include "stack/walker.h"

using namespace qxplatform;

namespace
{

#if defined(__x86_64__)
constexpr DWORD kOwnMachine = IMAGE_FILE_MACHINE_AMD64;

DWORD64 ProgramCounter(const CONTEXT& context)
{
    return context.Rip;
}

DWORD64 StackPointer(const CONTEXT& context)
{
    return context.Rsp;
}
#else
constexpr DWORD kOwnMachine = IMAGE_FILE_MACHINE_ARM64;

DWORD64 ProgramCounter(const CONTEXT& context)
{
    return context.Pc;
}

DWORD64 StackPointer(const CONTEXT& context)
{
    return context.Sp;
}
#endif

constexpr DWORD64 kFrameToCanonical = 16;

// Indices into STACKFRAME64::Reserved.
constexpr int kHasBegun = 0;
constexpr int kIsExact = 1;

// Replaces the registers of a function by its caller's. Functions that have no rules in memory may have some in the
// debug information of the session.
bool StepOut(SymbolSession* session, CONTEXT& context, BOOL& isExact)
{
    if (session != nullptr && !QxHasFrameRule(&context, isExact))
    {
        const DWORD64 address = ProgramCounter(context) - (isExact ? 0 : 1);
        SymbolModule* const module = session->FindModule(address);
        FrameRule rule;
        if (module != nullptr && FindDebugFrameRule(*module, address, rule))
            return QxUnwindFrameByRule(&context, &isExact, &rule) != FALSE;
    }
    return QxUnwindFrame(&context, &isExact) != FALSE;
}

ADDRESS64 Flat(DWORD64 offset)
{
    return {offset, 0, AddrModeFlat};
}

} // namespace

BOOL WINAPI StackWalk64(DWORD MachineType, HANDLE hProcess, HANDLE, LPSTACKFRAME64 StackFrame, PVOID ContextRecord,
    PREAD_PROCESS_MEMORY_ROUTINE64, PFUNCTION_TABLE_ACCESS_ROUTINE64, PGET_MODULE_BASE_ROUTINE64,
    PTRANSLATE_ADDRESS_ROUTINE64)
{
    if (MachineType != kOwnMachine || StackFrame == nullptr || ContextRecord == nullptr)
    {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    SymbolSession* const session = FindSession(hProcess);
    auto& context = *static_cast<CONTEXT*>(ContextRecord);
    BOOL isExact = TRUE;
    if (StackFrame->Reserved[kHasBegun] != 0)
    {
        isExact = StackFrame->Reserved[kIsExact] != 0;
        if (!StepOut(session, context, isExact))
            return FALSE;
    }
    if (ProgramCounter(context) == 0)
        return FALSE;
    CONTEXT caller = context;
    BOOL isCallerExact = isExact;
    const bool hasCaller = StepOut(session, caller, isCallerExact);
    const bool isFirst = StackFrame->Reserved[kHasBegun] == 0;
    StackFrame->AddrPC = Flat(ProgramCounter(context));
    StackFrame->AddrStack = Flat(StackPointer(context));
    StackFrame->AddrFrame = Flat(hasCaller ? StackPointer(caller) - kFrameToCanonical : StackPointer(context));
    StackFrame->AddrReturn = Flat(hasCaller ? ProgramCounter(caller) : 0);
    StackFrame->AddrBStore = Flat(isExact && !isFirst ? 1 : 0);
    StackFrame->FuncTableEntry = nullptr;
    for (DWORD64& word : StackFrame->Params)
        word = 0;
    StackFrame->Reserved[kHasBegun] = 1;
    StackFrame->Reserved[kIsExact] = isExact ? 1 : 0;
    return TRUE;
}

PVOID WINAPI SymFunctionTableAccess64(HANDLE, DWORD64)
{
    SetLastError(ERROR_NOT_SUPPORTED);
    return nullptr;
}
