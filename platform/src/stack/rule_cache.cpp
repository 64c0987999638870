#include "stack/rule_cache.h"

namespace qxplatform
{
namespace
{

// Returns true if a multiple of 8 fits the field for offsets, and stores it in units of 8.
bool Fits(std::int64_t offset, std::uint32_t& field)
{
    field = static_cast<std::uint32_t>(offset / 8);
    return offset >= 0 && offset % 8 == 0 && offset / 8 < 1 << ShortRule::kOffsetBits;
}

// In functions that realign their stack, compilers store the frame address in memory, below the saved frame pointer.
// Returns true for the expression "the memory at the frame pointer plus a negative offset".
bool IsWordBelowFramePointer(const std::uint8_t* expression, TableBytes table, std::int64_t& offset)
{
    constexpr std::uint8_t kBasedOnFramePointer = 0x70 + kFramePointer;
    constexpr std::uint8_t kDereference = 0x06;
    if (!table.Contains(expression))
        return false;
    TableReader length({expression, table.end});
    TableReader reader(length.Take(length.ReadUleb()));
    if (reader.Read<std::uint8_t>() != kBasedOnFramePointer)
        return false;
    offset = reader.ReadSleb();
    return reader.Read<std::uint8_t>() == kDereference && reader.IsAtEnd() && !reader.HasFailed();
}

// Returns true for the expression "the frame pointer".
bool IsFramePointer(const std::uint8_t* expression, TableBytes table)
{
    constexpr std::uint8_t kBasedOnFramePointer = 0x70 + kFramePointer;
    return table.Contains(expression) && table.end - expression >= 3 && expression[0] == 2 &&
           expression[1] == kBasedOnFramePointer && expression[2] == 0;
}

} // namespace

ShortRule ShortRuleOf(const FrameRule& rule, const UnwindTable& table)
{
    ShortRule result;
    const FrameRule::State& state = rule.state;
    const ShortRule other;
    if (!rule.isSignalFrame && state.how[rule.returnColumn] == How::Undefined)
    {
        result.kind = ShortRule::Kind::Outermost;
        return result;
    }
    if (rule.isSignalFrame || rule.returnColumn != kProgramCounter || state.how[kProgramCounter] != How::AtOffset ||
        state.value[kProgramCounter] != -8 || state.how[kStackPointer] != How::Same)
        return other;
    if (state.cfaHow == How::Expression)
    {
        std::int64_t offset = 0;
        if (!IsWordBelowFramePointer(state.CfaExpression(), table.frames, offset) ||
            !Fits(-offset, result.frameOffset) || state.how[kFramePointer] != How::AtExpression ||
            !IsFramePointer(state.ExpressionOf(kFramePointer), table.frames))
            return other;
        result.kind = ShortRule::Kind::InMemory;
        return result;
    }
    if (state.cfaRegister != kStackPointer && state.cfaRegister != kFramePointer)
        return other;
    result.kind =
        state.cfaRegister == kStackPointer ? ShortRule::Kind::FromStackPointer : ShortRule::Kind::FromFramePointer;
    const bool isSaved = state.how[kFramePointer] == How::AtOffset;
    if (!Fits(state.cfaOffset, result.frameOffset) || (!isSaved && state.how[kFramePointer] != How::Same) ||
        (isSaved && (!Fits(-state.value[kFramePointer], result.savedOffset) || result.savedOffset == 0)))
        return other;
    return result;
}

void RuleCache::Remove(std::uintptr_t begin, std::uintptr_t end)
{
    for (std::atomic<std::uint64_t>& word : _words)
    {
        std::uint64_t present = word.load(std::memory_order_relaxed);
        const std::uint64_t page = present >> kRuleBits;
        if (page >= TagOf(begin) && page <= TagOf(end - 1))
            word.compare_exchange_strong(present, 0, std::memory_order_relaxed);
    }
}

} // namespace qxplatform
