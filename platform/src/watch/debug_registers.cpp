// GetThreadContext and SetThreadContext, and the record of the registers that a thread has set. Each breakpoint is a
// performance event or, where the kernel refuses that, a register written by a child process.
#include "watch/debug_registers.h"

#include <errhandlingapi.h>
#include <processthreadsapi.h>

#include "base/fail.h"
#include "base/fork_gate.h"
#include "base/mutex.h"
#include "threads/thread_context.h"
#include "threads/thread_handles.h"
#include "watch/breakpoint_event.h"
#include "watch/trap_signal.h"

#include <cerrno>
#include <mutex>
#include <optional>
#include <utility>

#if defined(__x86_64__)

#include "watch/tracing_child.h"

namespace qxplatform
{
namespace
{

// What the debug registers of a thread contain.
struct Settings
{
    DWORD64 address[kBreakpointSlots] = {};
    DWORD64 control = 0;

    bool IsEnabled(int slot) const { return (control >> (2 * slot) & 3) != 0; }
    unsigned Condition(int slot) const { return control >> (16 + 4 * slot) & 3; }
    // Returns nothing if the slot is off.
    std::optional<Breakpoint> At(int slot) const
    {
        constexpr unsigned kLengths[] = {1, 2, 8, 4};
        if (!IsEnabled(slot))
            return std::nullopt;
        return Breakpoint{address[slot], kLengths[control >> (18 + 4 * slot) & 3], Condition(slot) == 1};
    }
    // Conditions other than writes (1) and accesses (3) stop at instructions and ports.
    bool IsSupported() const
    {
        for (int slot = 0; slot < kBreakpointSlots; ++slot)
            if (IsEnabled(slot) && (Condition(slot) & 1) == 0)
                return false;
        return true;
    }
};

// The breakpoints of a thread. They end with the thread.
class ThreadBreakpoints
{
public:
    static ThreadBreakpoints& Current()
    {
        thread_local ThreadBreakpoints own;
        current = &own;
        own.ForgetParents();
        return own;
    }

    ~ThreadBreakpoints()
    {
        current = nullptr;
        for (Slot& slot : _slots)
            CloseEvent(slot);
    }

    // Returns null for a thread that has none. Safe in signal handlers.
    static const Settings* Present()
    {
        return current != nullptr && current->_generation == ForkGeneration() ? &current->_settings : nullptr;
    }

    // Returns 0 or an errno value; then nothing has changed.
    int Apply(const Settings& wanted)
    {
        const Settings before = _settings;
        const int result = Change(wanted);
        if (result != 0)
            Change(before);
        return result;
    }

private:
    struct Slot
    {
        Descriptor event;
        std::optional<Breakpoint> traced; // set by a child process
    };

    // Forgets the parent's breakpoints in a forked child: the child inherits their descriptors, but its thread has no
    // breakpoints.
    void ForgetParents()
    {
        if (_generation == ForkGeneration())
            return;
        for (Slot& slot : _slots)
            slot = Slot();
        _settings = {};
        _generation = ForkGeneration();
    }

    static void CloseEvent(Slot& slot)
    {
        if (slot.event)
            CloseBreakpointEvent(std::exchange(slot.event, Descriptor()));
    }

    int Change(const Settings& wanted)
    {
        bool tracedChange = false;
        for (int number = 0; number < kBreakpointSlots; ++number)
            if (_settings.At(number) != wanted.At(number))
            {
                Slot& slot = _slots[number];
                CloseEvent(slot);
                tracedChange |= std::exchange(slot.traced, std::nullopt).has_value();
            }
        int refusal = 0;
        for (int number = 0; number < kBreakpointSlots; ++number)
            if (const auto breakpoint = wanted.At(number); breakpoint && !IsSet(number))
            {
                Slot& slot = _slots[number];
                slot.event = OpenBreakpointEvent(*breakpoint, number);
                if (slot.event)
                    continue;
                refusal = errno;
                slot.traced = breakpoint;
                tracedChange = true;
            }
        _settings = wanted;
        const int result = tracedChange ? WriteTraced() : 0;
        return result != 0 && refusal == ENOSPC ? refusal : result;
    }

    bool IsSet(int number) const { return _slots[number].event || _slots[number].traced; }

    int WriteTraced() const
    {
        BreakpointSlots traced;
        for (std::size_t number = 0; number < traced.size(); ++number)
            traced[number] = _slots[number].traced;
        return WriteDebugRegistersByChild(traced);
    }

    [[gnu::tls_model("initial-exec")]] static constinit thread_local ThreadBreakpoints* current;

    Slot _slots[kBreakpointSlots];
    Settings _settings;
    unsigned _generation = ForkGeneration();
};

constinit thread_local ThreadBreakpoints* ThreadBreakpoints::current = nullptr;

} // namespace

bool ReadDebugRegisters(CONTEXT& context)
{
    const Settings* const present = ThreadBreakpoints::Present();
    const Settings settings = present != nullptr ? *present : Settings();
    context.Dr0 = settings.address[0];
    context.Dr1 = settings.address[1];
    context.Dr2 = settings.address[2];
    context.Dr3 = settings.address[3];
    context.Dr6 = 0;
    context.Dr7 = settings.control;
    return true;
}

} // namespace qxplatform

using namespace qxplatform;

namespace
{

bool IsCurrent(const Ref<ThreadObject>& thread)
{
    return thread.get() == &ThreadObject::Current();
}

} // namespace

BOOL WINAPI SetThreadContext(HANDLE hThread, const CONTEXT* lpContext)
{
    const Ref<ThreadObject> thread = ThreadOf(hThread, THREAD_SET_CONTEXT);
    if (!thread)
        return FALSE;
    if (lpContext->ContextFlags != CONTEXT_DEBUG_REGISTERS || !IsCurrent(thread))
        return Fail(ERROR_NOT_SUPPORTED);
    const Settings wanted{{lpContext->Dr0, lpContext->Dr1, lpContext->Dr2, lpContext->Dr3}, lpContext->Dr7};
    if (!wanted.IsSupported())
        return Fail(ERROR_NOT_SUPPORTED);
    CatchTraps();
    switch (const int error = ThreadBreakpoints::Current().Apply(wanted))
    {
    case 0:
        return TRUE;
    case ENOSPC:
        return Fail(ERROR_NO_SYSTEM_RESOURCES);
    case EPERM:
    case EACCES:
    case ENOSYS:
        return Fail(ERROR_ACCESS_DENIED);
    default:
        return Fail(ErrorFromErrno(error));
    }
}

#else

bool qxplatform::ReadDebugRegisters(CONTEXT&)
{
    return false;
}

BOOL WINAPI SetThreadContext(HANDLE, const CONTEXT*)
{
    return qxplatform::Fail(ERROR_NOT_SUPPORTED);
}

#endif

namespace
{

BOOL GiveDebugRegisters(const qxplatform::ThreadObject& thread, CONTEXT& context)
{
    if (context.ContextFlags != CONTEXT_DEBUG_REGISTERS || &thread != &qxplatform::ThreadObject::Current())
        return qxplatform::Fail(ERROR_NOT_SUPPORTED);
    return qxplatform::ReadDebugRegisters(context) || qxplatform::Fail(ERROR_NOT_SUPPORTED);
}

} // namespace

BOOL WINAPI GetThreadContext(HANDLE hThread, LPCONTEXT lpContext)
{
    const qxplatform::Ref<qxplatform::ThreadObject> thread = qxplatform::ThreadOf(hThread, THREAD_GET_CONTEXT);
    if (!thread)
        return FALSE;
    if ((lpContext->ContextFlags & CONTEXT_DEBUG_REGISTERS) == CONTEXT_DEBUG_REGISTERS)
        return GiveDebugRegisters(*thread, *lpContext);
    const DWORD wanted = lpContext->ContextFlags;
    if (!qxplatform::StoreThreadContext(*thread, *lpContext))
        return FALSE;
    lpContext->ContextFlags = wanted;
    return TRUE;
}
