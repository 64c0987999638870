// Operations on all blocks of a heap: checks of debug objects, and the total size.
#include "heaps/heap_walk.h"

#include "diag/report.h"
#include "heaps/memory_access.h"

#include <algorithm>

namespace qx
{

// If the object isn't in a block of this heap, reads only accessible memory; all other fields are 0.
clsHeapNode::DebugObject clsHeapNode::ReadDebugObject(const void* object, std::size_t blockSize) const
{
    DebugObject result{{}, BytesAt(object, 0), blockSize};
    const void* const begin = BytesAt(object, -static_cast<std::ptrdiff_t>(kDebugHeaderSize));
    if (blockSize != kNoBlock)
        std::memcpy(&result.header, begin, sizeof result.header);
    else
        ReadCarefully(begin, &result.header, sizeof result.header);
    return result;
}

bool clsHeapNode::HasFence(const DebugObject& object) const
{
    if (object.blockSize == kNoBlock)
        return ReadWordCarefully(BytesAt(object.object, object.header.size)) == kFence;
    return HasFenceInBlock(object.object, object.header.size, object.blockSize);
}

bool clsHeapNode::Check(const DebugObject& object) const
{
    if (object.header.firstMagic != kFirstMagic)
    {
        ReportLine(L"Error: Not allocated with UTIL or memory underrun");
        Dump(object);
        return false;
    }
    if (!HasFence(object))
    {
        ReportLine(L"Error: Memory overrun, fence value has been changed");
        Dump(object);
        return false;
    }
    return true;
}

void clsHeapNode::CheckAll() const
{
    ForEachDebugObject([this](const DebugObject& object) { return Check(object); });
}

void clsHeapNode::ReleaseChain(const scCallChain* chain)
{
    if (chain == nullptr)
        return;
    _chains.Release(chain);
    --_chainsInUse;
}

std::int32_t clsHeapNode::Validate(const void* object)
{
    const HeapFunctions& functions = LateHeapFunctions();
    if (functions.walk == nullptr)
    {
        ReportLine(L"Error: UtilHeapValidate(...) does only run under NT");
        return kHeapsNotSupported;
    }
    if (object != nullptr && functions.validate != nullptr)
    {
        const std::uint32_t magic = Inspect(object).magic;
        const std::size_t offset = magic == kSecondMagic ? kDebugHeaderSize : magic == kPlainMagic ? kPlainOverhead : 0;
        const void* const base = BytesAt(object, -static_cast<std::ptrdiff_t>(offset));
        // The system's check may read from any address it is given, so the address must be a block's.
        if (!IsBlock(base) || !functions.validate(_systemHeap, Serialization(), base))
        {
            ReportLine(L" Error: Heap corrupted");
            Report();
            return kHeapsCorrupted;
        }
    }
    if (IsDebugHeap())
        CheckAll();
    return 0;
}

std::int32_t clsHeapNode::SizeOfBlocks() const
{
    if (LateHeapFunctions().walk == nullptr)
        return kHeapsNotSupported;
    std::uint64_t sum = 0;
    ForEachBlock(
        [&sum](const void*, std::size_t size)
        {
            sum += size;
            return true;
        });
    return static_cast<std::int32_t>(std::min<std::uint64_t>(sum, INT32_MAX));
}

} // namespace qx
