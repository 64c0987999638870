// Evaluates the expressions of unwind tables.
#pragma once

#include "stack/registers.h"
#include "stack/stack_memory.h"
#include "stack/table_reader.h"

#include <cstdint>

namespace qxplatform
{

// Evaluates an expression, given by the address of its length, which must be within `table`. The stack of the
// evaluation begins with `*start`, or is empty if `start` is null. Returns false if the expression is damaged, or
// refers to unreadable memory or to a register without a value.
bool Evaluate(const std::uint8_t* expression, TableBytes table, const Registers& registers, const StackMemory& memory,
    const std::uintptr_t* start, std::uintptr_t& result);

} // namespace qxplatform
