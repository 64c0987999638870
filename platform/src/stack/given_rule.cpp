#include "stack/given_rule.h"

#include "stack/module_tables.h"
#include "stack/unwinder.h"

using namespace qxplatform;

BOOL WINAPI QxHasFrameRule(const CONTEXT* context, BOOL isExact)
{
    const std::uintptr_t address = LookUpAddress(RegistersOf(*context), isExact != FALSE);
    ModuleTables tables;
    FrameRule rule;
    return FindModuleTables(address, tables) && FindFrameRule(tables.table, address, rule);
}

BOOL WINAPI QxUnwindFrameByRule(CONTEXT* context, BOOL* isExact, const FrameRule* rule)
{
    Registers registers = RegistersOf(*context);
    bool exact = *isExact != FALSE;
    if (ApplyRule(*rule, UnwindTable(), registers, exact, StackMemory()) != Step::Done)
        return FALSE;
    StoreRegisters(registers, *context);
    *isExact = exact;
    return TRUE;
}
