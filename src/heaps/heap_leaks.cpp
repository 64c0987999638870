#include "heaps/heap_leaks.h"

#include "heaps/heap_walk.h"
#include "stacks/address_texts.h"

#include <algorithm>
#include <utility>

namespace qx
{

void LeakGroups::Add(const clsHeapNode& heap)
{
    heap.ForEachBlock(
        [&](const void* block, std::size_t size)
        {
            scDebugHeader header = {};
            if (size >= kDebugOverhead)
                std::memcpy(&header, block, sizeof header);
            const bool isDebug = header.firstMagic == kFirstMagic && header.systemHeap == heap.SystemHeap();
            const bool isPlain = !isDebug && size >= kPlainOverhead && WordAt(block) == kPlainMagic;
            const std::size_t inFront = isDebug ? kDebugHeaderSize : isPlain ? kPlainOverhead : 0;

            LeakGroup& group = GroupOf(isDebug ? header.chain : nullptr);
            if (group.count < LeakGroup::kMostObjects)
                group.objects[group.count] = BytesAt(block, static_cast<std::ptrdiff_t>(inFront));
            group.bytes += size - (isDebug ? kDebugOverhead : inFront);
            ++group.count;
            if (!isDebug)
                return true;
            if (!group.hasTicks || _now - header.tick > _now - group.firstTick)
                group.firstTick = header.tick;
            if (!group.hasTicks || _now - header.tick < _now - group.lastTick)
                group.lastTick = header.tick;
            if (!group.hasTicks)
                group.tag = header.tag;
            group.hasTicks = true;
            return true;
        });
}

// A pointer that isn't a record's comes from a damaged header. Such objects count as objects without a chain.
LeakGroup& LeakGroups::GroupOf(const scCallChain* chain)
{
    const auto known = _groupOfChain.find(chain);
    if (known != _groupOfChain.end())
        return _groups[known->second];
    if (chain != nullptr && !_chains.IsRecord(chain))
        return GroupOf(nullptr);
    LeakGroup group;
    if (chain != nullptr)
        for (const scCaller& entry : chain->entries)
            if (entry.address != nullptr)
                group.callers.push_back(reinterpret_cast<std::uint64_t>(entry.address));
    _groups.push_back(std::move(group));
    _groupOfChain.emplace(chain, _groups.size() - 1);
    return _groups.back();
}

std::vector<LeakGroup> LeakGroups::Sorted() &&
{
    std::stable_sort(_groups.begin(), _groups.end(),
        [](const LeakGroup& a, const LeakGroup& b)
        { return a.bytes != b.bytes ? a.bytes > b.bytes : a.count > b.count; });
    return std::move(_groups);
}

// Chains of one program have most of their callers in common, so each address is described once.
std::vector<String> CallerTextsOf(const std::vector<LeakGroup>& groups)
{
    std::vector<std::uint64_t> callers;
    for (const LeakGroup& group : groups)
        callers.insert(callers.end(), group.callers.begin(), group.callers.end());
    if (callers.empty())
        return {};
    std::vector<std::uint64_t> distinct = callers;
    std::sort(distinct.begin(), distinct.end());
    distinct.erase(std::unique(distinct.begin(), distinct.end()), distinct.end());

    std::vector<String> distinctTexts(distinct.size());
    const auto store = [](void* texts, std::size_t index, const wchar_t* text)
    {
        (*static_cast<std::vector<String>*>(texts))[index] = text;
    };
    if (!DescribeAddresses(distinct.data(), distinct.size(), false, store, &distinctTexts))
        for (std::size_t i = 0; i < distinct.size(); ++i)
            distinctTexts[i] = String(String::kFormatted, L"0x%08I64x", distinct[i]);

    std::vector<String> texts;
    texts.reserve(callers.size());
    for (const std::uint64_t caller : callers)
    {
        const auto place = std::lower_bound(distinct.begin(), distinct.end(), caller);
        texts.push_back(distinctTexts[static_cast<std::size_t>(place - distinct.begin())]);
    }
    return texts;
}

} // namespace qx
