// One step of a walk: from a function to its caller.
#pragma once

#include "stack/module_tables.h"
#include "stack/registers.h"
#include "stack/stack_memory.h"

namespace qxplatform
{

enum class Step
{
    Done,
    End,            // the frame is the outermost one, or the stack is damaged
    UnknownRegister // the rule refers to a register without a value
};

// Returns an address within a frame's call, or the address of the frame's next instruction if `isExact`.
inline std::uintptr_t LookUpAddress(const Registers& registers, bool isExact)
{
    return registers.value[kProgramCounter] - (isExact ? 0 : 1);
}

// Replaces the registers of a function by its caller's. `isExact` is true if the program counter isn't a return
// address. On failure both arguments are unchanged.
Step StepOut(Registers& registers, bool& isExact, const StackMemory& memory);

// Does the same by a rule that was found in a module's tables.
Step ApplyRule(
    const FrameRule& rule, const UnwindTable& table, Registers& registers, bool& isExact, const StackMemory& memory);

} // namespace qxplatform
