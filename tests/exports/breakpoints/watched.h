// Counts the hits of data breakpoints.
#pragma once

#include <qxut23/breakpoints.h>

#include <windows.h>

#include <cstdint>
#include <vector>

namespace watched
{

// The hits of the calling thread since the last call of TakeHits.
inline thread_local unsigned hits = 0;
inline thread_local unsigned slots = 0; // the slots of the last hit, one bit each

inline LONG NTAPI OnException(EXCEPTION_POINTERS* exception)
{
    if (exception->ExceptionRecord->ExceptionCode != EXCEPTION_SINGLE_STEP)
        return EXCEPTION_CONTINUE_SEARCH;
    ++hits;
    slots = static_cast<unsigned>(exception->ContextRecord->Dr6 & 0xF);
    exception->ContextRecord->Dr6 = 0;
    return EXCEPTION_CONTINUE_EXECUTION;
}

class Handler
{
public:
    Handler() : _handle(AddVectoredExceptionHandler(1, OnException)) {}
    Handler(const Handler&) = delete;
    Handler& operator=(const Handler&) = delete;
    ~Handler() { RemoveVectoredExceptionHandler(_handle); }

private:
    void* const _handle;
};

inline unsigned TakeHits()
{
    const unsigned taken = hits;
    hits = 0;
    return taken;
}

inline HDATABP Watch(const volatile void* address, std::uint32_t size, bool isWriteOnly = true)
{
    return UtilSetDataBP(reinterpret_cast<std::uintptr_t>(address), size, isWriteOnly);
}

// Keeps a breakpoint that is never removed because its thread ends first, so that leak checkers don't report it.
inline HDATABP Abandon(HDATABP breakpoint)
{
    static auto& abandoned = *new std::vector<HDATABP>; // never destroyed
    abandoned.push_back(breakpoint);
    return breakpoint;
}

inline std::int32_t SlotOf(HDATABP breakpoint)
{
    return *reinterpret_cast<const std::int32_t*>(breakpoint);
}

// How this machine treats data breakpoints. Some virtual machines accept breakpoints that never fire.
enum class Machine
{
    Fires,
    IsSilent,
    Refuses
};

inline Machine MachineDoes()
{
    static volatile int cell;
    const Handler handler;
    const HDATABP breakpoint = Watch(&cell, 4);
    const bool isGranted = SlotOf(breakpoint) == 0;
    cell = 1;
    const bool isHit = TakeHits() != 0;
    UtilRemoveDataBP(breakpoint);
    return isHit ? Machine::Fires : isGranted ? Machine::IsSilent : Machine::Refuses;
}

constexpr int kNotGranted = 77;

// Sets four breakpoints and writes to each. Expects hits if the machine reports them. Returns 0, or the line of the
// first failed check.
inline int UseAll()
{
    const Machine machine = MachineDoes();
    const unsigned one = machine == Machine::Fires ? 1 : 0;
    const Handler handler;
    volatile std::int64_t cells[4] = {};
    HDATABP taken[4];
    if (machine == Machine::Refuses)
        return kNotGranted;
    for (int round = 0; round < 2; ++round)
    {
        for (int slot = 0; slot < 4; ++slot)
            if (SlotOf(taken[slot] = Watch(&cells[slot], 8)) != slot)
                return __LINE__;
        for (unsigned slot = 0; slot < 4; ++slot)
        {
            cells[slot] = 1;
            if (TakeHits() != one || slots != one << slot)
                return __LINE__;
        }
        for (const HDATABP breakpoint : taken)
            UtilRemoveDataBP(breakpoint);
        cells[0] = 2;
        if (TakeHits() != 0)
            return __LINE__;
    }
    return 0;
}

} // namespace watched
