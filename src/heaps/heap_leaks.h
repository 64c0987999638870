// Live objects, grouped by the call chains of their allocations.
#pragma once

#include "core/text/string.h"
#include "heaps/call_chains.h"

#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <vector>

namespace qx
{

class clsHeapNode;

// Objects with the same call chain.
struct LeakGroup
{
    static constexpr std::size_t kMostObjects = 8;

    std::uint64_t count = 0;
    std::uint64_t bytes = 0;
    bool hasTicks = false; // plain objects have no ticks
    std::uint32_t firstTick = 0;
    std::uint32_t lastTick = 0;
    std::uint32_t tag = 0;               // of the first object that was found
    std::vector<std::uint64_t> callers;  // empty for objects without a chain
    const void* objects[kMostObjects]{}; // the first ones that were found
};

// Collects the groups. Chains are copied, so the groups remain valid after the critical section is left.
class LeakGroups
{
public:
    // `now` is the current tick count. Ticks are compared by their distance to it, because the counter wraps.
    LeakGroups(const CallChains& chains, std::uint32_t now) : _chains(chains), _now(now) {}

    // Adds the live objects of a heap. The caller holds the critical section of the heaps.
    void Add(const clsHeapNode& heap);

    // Returns the groups with the most bytes first.
    std::vector<LeakGroup> Sorted() &&;

private:
    LeakGroup& GroupOf(const scCallChain* chain);

    const CallChains& _chains;
    std::uint32_t _now;
    std::vector<LeakGroup> _groups;
    std::unordered_map<const scCallChain*, std::size_t> _groupOfChain;
};

// Returns the texts of the callers of all groups, one group after the other. Opens one session of the debug-help
// library; without one, the texts are plain addresses. The caller must not hold the critical section
// of the heaps.
std::vector<String> CallerTextsOf(const std::vector<LeakGroup>& groups);

} // namespace qx
