// Finds out who overwrites a variable: a data breakpoint stops the thread right after each write, and an exception
// handler notes the place. Exception handlers and registers are types of the system; on systems without them, their
// headers come with the library. docs/diagnostics.md shows the program and its output.
#include "example_text.h"

#include <qxut23/addresses.h>
#include <qxut23/breakpoints.h>

#include <windows.h>

#include <cstdint>
#include <cstdio>

namespace
{

// The variable that somebody overwrites.
volatile std::int32_t total = 0;

[[gnu::noinline]] void AddFees(std::int32_t fees)
{
    total = total + fees;
}

[[gnu::noinline]] void SetTotal(std::int32_t value)
{
    total = value;
}

struct Hit
{
    std::uint64_t address; // of the instruction after the write
    std::int32_t value;    // after the write
};

constexpr std::size_t kMostHits = 8;
Hit hits[kMostHits];
std::size_t hitCount = 0;

// On processors without these registers there are no hits.
template <class Context>
bool NoteHit(const Context& context)
{
    constexpr std::uint64_t kSlots = 0xF;
    if constexpr (requires { context.Dr6; })
    {
        if ((context.Dr6 & kSlots) == 0)
            return false;
        if (hitCount < kMostHits)
            hits[hitCount++] = {context.Rip, total};
        return true;
    }
    else
        return false;
}

// Runs in the middle of the write, whatever locks the thread holds, so it only stores numbers.
LONG NTAPI OnException(EXCEPTION_POINTERS* exception)
{
    const bool isHit =
        exception->ExceptionRecord->ExceptionCode == EXCEPTION_SINGLE_STEP && NoteHit(*exception->ContextRecord);
    return isHit ? EXCEPTION_CONTINUE_EXECUTION : EXCEPTION_CONTINUE_SEARCH;
}

void PrintHit(void*, std::size_t index, const QXWCHAR* text)
{
    std::printf("total is now %d: %s\n", hits[index].value, ShortPlace(Narrow(text)).c_str());
}

[[gnu::noinline]] void Watch()
{
    void* const handler = AddVectoredExceptionHandler(1, OnException);
    const HDATABP breakpoint = UtilSetDataBP(reinterpret_cast<std::uint64_t>(&total), sizeof total, 1);
    AddFees(120);
    AddFees(35);
    SetTotal(0);
    UtilRemoveDataBP(breakpoint);
    RemoveVectoredExceptionHandler(handler);

    std::uint64_t places[kMostHits];
    for (std::size_t index = 0; index < hitCount; ++index)
        places[index] = hits[index].address;
    // Like a return address, each place is the address after the instruction to be found.
    if (hitCount > 0 && !QxDescribeAddresses(places, hitCount, 0, PrintHit, nullptr))
        std::printf(
            "%d writes, but there is no debug-help library that finds their functions\n", static_cast<int>(hitCount));
    if (hitCount == 0)
        std::printf("no write was seen: the machine grants no data breakpoints, or they never fire here\n");
}

} // namespace

int main()
{
    std::printf("== Watch\n");
    Watch();
}
