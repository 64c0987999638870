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

// A rule for all registers. An expression is stored as a pointer into the table, to the length field in front of it.
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

// The part of an entry that is common to several functions.
struct CommonEntry
{
    std::uint64_t codeAlignment = 1;
    std::int64_t dataAlignment = 1;
    std::uint64_t returnColumn = 0;
    std::uint8_t pointerEncoding = 0;
    bool hasAugmentation = false;
    bool isSignalFrame = false;
    TableBytes instructions;
};

// Finds rules in the table of a module, one after the other. Remembers the common entry, which most functions of a
// module share, and the position in the table, because a function is often near its caller.
class RuleFinder
{
public:
    explicit RuleFinder(const UnwindTable& table);

    // Stores the rule for the instruction at an address. Returns false if the table has no entry for it or is damaged.
    bool Find(std::uintptr_t address, FrameRule& rule);

private:
    struct Function; // the part of an entry that is its own

    const std::uint8_t* SearchIndex(std::uintptr_t address);
    std::uintptr_t BeginAt(std::uint64_t position) const;
    bool RuleOfEntry(const std::uint8_t* at, std::uintptr_t address, FrameRule& rule);
    bool ScanFrames(std::uintptr_t address, FrameRule& rule);
    bool ReadFunction(const std::uint8_t* at, std::uintptr_t address, Function& function);
    bool ReadCommon(const std::uint8_t* at);

    TableBytes _index;
    TableBytes _frames;
    const std::uint8_t* _firstFrame = nullptr; // null if the table is damaged
    std::uint64_t _count = 0;                  // of the sorted index; 0 if there is none
    const std::uint8_t* _entries = nullptr;
    std::uint64_t _position = 0;             // in the index, of the function that was found last
    const std::uint8_t* _commonAt = nullptr; // null if no common entry is remembered
    CommonEntry _common;
    FrameRule::State _initial; // after the instructions of the common entry
};

// Finds a single rule.
bool FindFrameRule(const UnwindTable& table, std::uintptr_t address, FrameRule& rule);

// Returns the start of the entries (.eh_frame) that an index refers to, or null.
const std::uint8_t* FramesOf(TableBytes index);

} // namespace qxplatform
