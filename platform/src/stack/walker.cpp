#include "stack/walker.h"

#include "stack/unwinder.h"

using namespace qxplatform;

BOOL WINAPI QxUnwindFrame(CONTEXT* context, BOOL* isExact)
{
    Registers registers = RegistersOf(*context);
    bool exact = *isExact != FALSE;
    if (StepOut(registers, exact, StackMemory()) != Step::Done)
        return FALSE;
    StoreRegisters(registers, *context);
    *isExact = exact;
    return TRUE;
}
