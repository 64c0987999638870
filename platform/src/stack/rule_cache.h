// Remembers the rules of return addresses, without locks.
#pragma once

#include "stack/module_tables.h"

#include <atomic>
#include <cstdint>

namespace qxplatform
{

// The rule of a return address in a form that restores only the stack pointer, the frame pointer and the program
// counter, which is enough for almost all functions.
struct ShortRule
{
    enum class Kind : std::uint32_t
    {
        FromStackPointer, // the frame address is the stack pointer plus an offset
        FromFramePointer, // the frame address is the frame pointer plus an offset
        InMemory,         // the frame address is in memory, below the frame pointer by an offset
        Outermost,        // the function has no caller
        Other             // needs the complete rule
    };

    // Offsets are counted in units of 8 bytes.
    static constexpr unsigned kOffsetBits = 13;

    Kind kind = Kind::Other;
    std::uint32_t frameOffset = 0;
    // FromStackPointer, FromFramePointer: the frame pointer is saved below the frame address by this offset; 0 if it is
    // preserved. InMemory: it is saved where the frame pointer points to.
    std::uint32_t savedOffset = 0;
};

// On other processors the return address isn't at a fixed place in the frame, so every rule is of the kind Other.
#if defined(__x86_64__)
constexpr bool kHasShortRules = true;
#else
constexpr bool kHasShortRules = false;
#endif

ShortRule ShortRuleOf(const FrameRule& rule, const UnwindTable& table);

// A table of fixed size. Each element is one word, which contains a part of the address and the short rule, so that it
// is read and written as a whole. An address always has the same element.
class RuleCache
{
public:
    // Stores the rule of a return address. Returns false if the rule isn't known.
    bool Find(std::uintptr_t address, ShortRule& rule) const
    {
        const std::uint64_t word = _words[IndexOf(address)].load(std::memory_order_relaxed);
        if (word >> kRuleBits != TagOf(address)) [[unlikely]]
            return false;
        rule.kind = static_cast<ShortRule::Kind>(word & kKindMask);
        rule.frameOffset = static_cast<std::uint32_t>(word >> kKindBits & kOffsetMask);
        rule.savedOffset = static_cast<std::uint32_t>(word >> (kKindBits + ShortRule::kOffsetBits) & kOffsetMask);
        return true;
    }

    void Store(std::uintptr_t address, const ShortRule& rule)
    {
        const std::uint64_t bits = static_cast<std::uint64_t>(rule.kind) |
                                   std::uint64_t{rule.frameOffset} << kKindBits |
                                   std::uint64_t{rule.savedOffset} << (kKindBits + ShortRule::kOffsetBits);
        if (IsCacheable(address))
            _words[IndexOf(address)].store(TagOf(address) << kRuleBits | bits, std::memory_order_relaxed);
    }

    // Removes the rules of all addresses of a range.
    void Remove(std::uintptr_t begin, std::uintptr_t end);

private:
    // An address has 47 bits. The tag consists of the high ones, the index depends on all of them, so that both
    // together determine the address.
    static constexpr unsigned kAddressBits = 47;
    static constexpr unsigned kIndexBits = 14;
    static constexpr unsigned kRuleBits = 64 - (kAddressBits - kIndexBits);
    static constexpr unsigned kKindBits = 3;
    static constexpr std::uint64_t kKindMask = (1 << kKindBits) - 1;
    static constexpr std::uint64_t kOffsetMask = (1 << ShortRule::kOffsetBits) - 1;
    static_assert(kKindBits + 2 * ShortRule::kOffsetBits <= kRuleBits);

    static bool IsCacheable(std::uintptr_t address)
    {
        return address >> kAddressBits == 0 && address >> kIndexBits != 0;
    }
    static std::uint64_t TagOf(std::uintptr_t address) { return address >> kIndexBits; }
    static std::size_t IndexOf(std::uintptr_t address)
    {
        return (address ^ address >> kIndexBits ^ address >> (kIndexBits + 5)) & ((1 << kIndexBits) - 1);
    }

    std::atomic<std::uint64_t> _words[1 << kIndexBits] = {};
};

} // namespace qxplatform
