// Reports about a heap, and its destruction.
#include "diag/report.h"
#include "heaps/chain_report.h"
#include "heaps/heap_walk.h"
#include "heaps/memory_access.h"

#include <algorithm>
#include <cwchar>

namespace qx
{
namespace
{

constexpr std::size_t kMostDumped = 64;
constexpr std::size_t kBytesOfLine = 8;

constexpr wchar_t kHexDigits[] = L"0123456789abcdef";

void ReportBytes(const std::uint8_t* bytes, std::size_t count)
{
    wchar_t line[2 + 3 * kBytesOfLine + 1 + kBytesOfLine + 1];
    std::fill(std::begin(line), std::end(line) - 1, L' ');
    *(std::end(line) - 1) = 0;
    wchar_t* field = line + 2;
    wchar_t* character = line + 2 + 3 * kBytesOfLine + 1;
    for (std::size_t i = 0; i < count; ++i, field += 3)
    {
        field[0] = kHexDigits[bytes[i] >> 4];
        field[1] = kHexDigits[bytes[i] & 0xF];
        *character++ = bytes[i] >= 0x20 && bytes[i] < 0x7F ? static_cast<wchar_t>(bytes[i]) : L'.';
    }
    ReportLine(L"%s", static_cast<const wchar_t*>(line));
}

} // namespace

void clsHeapNode::Dump(const DebugObject& object) const
{
    if (!UtilIsDebugActive() || object.header.firstMagic != kFirstMagic)
        return;
    const std::int32_t size = object.header.size;
    const ReportBlock block(L"-Object at %#p, %d(=0x%08x) Bytes", static_cast<void*>(object.object), size, size);
    std::uint8_t bytes[kMostDumped];
    std::size_t count = std::min(static_cast<std::size_t>(std::max(size, 0)), kMostDumped);
    if (object.blockSize != kNoBlock)
    {
        count = std::min(count, object.blockSize - kDebugOverhead);
        std::memcpy(bytes, object.object, count);
    }
    else
        count = ReadCarefully(object.object, bytes, count);
    for (std::size_t done = 0; done < count; done += kBytesOfLine)
        ReportBytes(bytes + done, std::min(count - done, kBytesOfLine));
    ReportChain(_chains, L"Memory object allocation", object.header.chain);
}

void clsHeapNode::Report() const
{
    if (!UtilIsDebugActive())
        return;
    const ReportedPaths paths;
    const ReportBlock block(L"Heap['%s'/'%s']: %d objects", ModuleName(), Name(), _liveObjects);
    ReportChain(_chains, L"Heap allocation", _creationTrace);
    ForEachDebugObject(
        [this](const DebugObject& object)
        {
            Dump(object);
            return true;
        });
}

std::int32_t clsHeapNode::Delete(clsHeapNode* heap)
{
    const ReportedPaths paths;
    if (heap->IsDebugHeap())
        heap->CheckAll();
    if (heap->_maximumLiveObjects > 0)
        ReportLine(L"Heap['%s'/'%s']: max %d, total %d allocations", heap->ModuleName(), heap->Name(),
            heap->_maximumLiveObjects, heap->_totalAllocations);
    const bool hasObjects = heap->_liveObjects != 0;
    if (hasObjects && (heap->_flags & kHeapNoWarning) == 0)
    {
        const ReportBlock block(L"Warning: deleting heap, but objects are left:");
        heap->Report();
    }
    if (heap->_chainsInUse != 0)
        heap->ForEachDebugObject(
            [heap](const DebugObject& object)
            {
                heap->ReleaseChain(object.header.chain);
                return true;
            });
    Discard(heap);
    return hasObjects ? kHeapsLeftOver : 0;
}

void clsHeapNode::Discard(clsHeapNode* heap)
{
    HeapDestroy(heap->_systemHeap);
    heap->_chains.Release(heap->_creationTrace);
    heap->~clsHeapNode();
    HeapFree(GetProcessHeap(), 0, heap);
}

} // namespace qx
