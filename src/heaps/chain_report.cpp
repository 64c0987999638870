#include "heaps/chain_report.h"

#include "diag/report.h"
#include "heaps/call_chains.h"

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <cwchar>
#include <new>

namespace qx
{
namespace
{

constexpr DWORD kPathCapacity = 1025; // longer paths don't fit in a line

struct KnownModule
{
    HMODULE module;
    wchar_t path[kPathCapacity];
};

// A memory region that a report has already looked up.
struct KnownRegion
{
    std::uintptr_t begin;
    std::uintptr_t end;
    const wchar_t* path; // null if the memory isn't committed
};

// Static arrays, because a report must not depend on free memory. Modules and regions that don't fit are looked up
// again for each line.
constexpr std::size_t kMostKnown = 64;
KnownModule knownModules[kMostKnown];
std::size_t knownCount = 0;
KnownRegion knownRegions[kMostKnown];
std::size_t knownRegionCount = 0;
int reportsInProgress = 0;

// Stores an empty path on failure.
void StorePath(HMODULE module, KnownModule& place)
{
    DWORD length = 0;
    try
    {
        length = GetModuleFileNameW(module, place.path, kPathCapacity);
    }
    catch (const std::bad_alloc&) // must not interrupt the operation that reports
    {
        length = 0;
    }
    place.module = module;
    place.path[length < kPathCapacity ? length : kPathCapacity - 1] = 0;
}

// Returns the entry of a module, adding it if necessary. Returns null if the array is full.
const KnownModule* Known(HMODULE module)
{
    for (std::size_t i = 0; i < knownCount; ++i)
        if (knownModules[i].module == module)
            return &knownModules[i];
    if (knownCount == kMostKnown)
        return nullptr;
    KnownModule& place = knownModules[knownCount++];
    StorePath(module, place);
    return &place;
}

// Stores a region. It begins at the page that was looked up, so a region that was looked up from a different page is
// replaced.
void Remember(const KnownRegion& region)
{
    for (std::size_t i = 0; i < knownRegionCount; ++i)
        if (knownRegions[i].end == region.end)
        {
            knownRegions[i] = region;
            return;
        }
    if (knownRegionCount < kMostKnown)
        knownRegions[knownRegionCount++] = region;
}

// Returns the path of the module that contains an address, or null if the memory isn't committed.
const wchar_t* PathOf(const void* address)
{
    const auto place = reinterpret_cast<std::uintptr_t>(address);
    for (std::size_t i = 0; i < knownRegionCount; ++i)
        if (place >= knownRegions[i].begin && place < knownRegions[i].end)
            return knownRegions[i].path;
    MEMORY_BASIC_INFORMATION memory = {};
    if (VirtualQuery(address, &memory, sizeof memory) == 0)
        return nullptr;
    const auto begin = reinterpret_cast<std::uintptr_t>(memory.BaseAddress);
    KnownRegion region{begin, begin + memory.RegionSize, nullptr};
    if (memory.State == MEM_COMMIT)
    {
        const auto module = static_cast<HMODULE>(memory.AllocationBase);
        const KnownModule* const known = Known(module);
        if (known == nullptr)
        {
            static KnownModule further;
            StorePath(module, further);
            return further.path;
        }
        region.path = known->path;
    }
    Remember(region);
    return region.path;
}

} // namespace

ReportedPaths::ReportedPaths() : _isOutermost(reportsInProgress++ == 0)
{
    if (_isOutermost)
        knownCount = knownRegionCount = 0;
}

ReportedPaths::~ReportedPaths()
{
    --reportsInProgress;
}

void ReportChain(const CallChains& chains, const wchar_t* subject, const scCallChain* chain)
{
    if (!UtilIsDebugActive() || !chains.IsRecord(chain))
        return;
    const ReportedPaths paths;
    ReportLine(L"%s stack trace:", subject);
    for (const scCaller& entry : chain->entries)
        if (const wchar_t* const path = entry.address != nullptr ? PathOf(entry.address) : nullptr)
            ReportLine(L" [called by %s]", path);
}

} // namespace qx
