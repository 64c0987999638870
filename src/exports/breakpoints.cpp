// Data breakpoints.
#include <qxut23/breakpoints.h>

#include "diag/data_breakpoint.h"
#include "exports/guard.h"

#include <cstdint>

using namespace qx;

// The handle is a block of 4 bytes with the number of the slot.
struct QXUT_DATABP
{
    DataBreakpoint slot;
};
static_assert(sizeof(QXUT_DATABP) == 4);

HDATABP UtilSetDataBP(std::uint64_t address, std::uint32_t size, std::int32_t writeOnly)
{
    return Guarded(HDATABP{},
        [=]
        {
            const HDATABP handle = new QXUT_DATABP{kNoSlot};
            handle->slot = Guarded(kNoSlot, [=] { return SetDataBreakpoint(address, size, writeOnly != 0); });
            return handle;
        });
}

void UtilRemoveDataBP(HDATABP breakpoint)
{
    if (breakpoint == nullptr)
        return;
    Guarded([=] { RemoveDataBreakpoint(breakpoint->slot); });
    breakpoint->slot = kNoSlot;
    delete breakpoint;
}
