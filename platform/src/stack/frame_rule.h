// Finds the rule by which the registers of a function's caller are restored, in the unwind table of a module.
#pragma once

#include "stack/registers.h"
#include "stack/table_reader.h"

#include <cstdint>

namespace qxplatform
{

// How a register of the caller is found.
enum class How : std::uint8_t
{
    Same,
    Undefined,
    AtOffset,     // in memory, at an offset from the canonical frame address
    Offset,       // the canonical frame address plus an offset
    InRegister,   // in another register
    AtExpression, // in memory, at the address that an expression computes
    Expression,   // the value that an expression computes
};

// A rule for all registers. Expressions are pointers into the table, at the length that precedes the expression.
struct FrameRule
{
    struct State
    {
        How how[kRegisterCount];
        How cfaHow; // Offset (from a register) or Expression
        std::uint8_t cfaRegister;
        std::int64_t cfaOffset;
        std::int64_t value[kRegisterCount]; // offset, register or expression

        const std::uint8_t* ExpressionOf(unsigned number) const
        {
            return reinterpret_cast<const std::uint8_t*>(value[number]);
        }
        const std::uint8_t* CfaExpression() const { return reinterpret_cast<const std::uint8_t*>(cfaOffset); }
    };

    State state;
    std::uint8_t returnColumn;
    bool isSignalFrame;
};

// The unwind table of a module.
struct UnwindTable
{
    TableBytes index;  // the sorted index (.eh_frame_hdr), up to the end of its segment
    TableBytes frames; // the readable segment that contains the entries (.eh_frame)
};

// Stores the rule for the instruction at an address. Returns false if the table has no entry for it or is damaged.
bool FindFrameRule(const UnwindTable& table, std::uintptr_t address, FrameRule& rule);

// Returns the start of the entries (.eh_frame) that an index refers to, or null.
const std::uint8_t* FramesOf(TableBytes index);

} // namespace qxplatform
