#include "heaps/chain_report.h"

#include "diag/report.h"
#include "heaps/call_chains.h"

#include <windows.h>

#include <cwchar>
#include <new>

namespace qx
{
namespace
{

constexpr DWORD kPathCapacity = 1025; // longer paths don't fit a line

struct KnownModule
{
    HMODULE module;
    wchar_t path[kPathCapacity];
};

// Static, because a report must not depend on free memory. Further modules are looked up for each line.
constexpr std::size_t kMostKnown = 64;
KnownModule knownModules[kMostKnown];
std::size_t knownCount = 0;
int reportsInProgress = 0;

// Returns 0 on failure.
DWORD StorePath(KnownModule& place)
{
    try
    {
        return GetModuleFileNameW(place.module, place.path, kPathCapacity);
    }
    catch (const std::bad_alloc&) // must not interrupt the operation that reports
    {
        return 0;
    }
}

const wchar_t* PathOf(HMODULE module)
{
    for (std::size_t i = 0; i < knownCount; ++i)
        if (knownModules[i].module == module)
            return knownModules[i].path;
    static KnownModule unknown;
    KnownModule& place = knownCount < kMostKnown ? knownModules[knownCount++] : unknown;
    place.module = module;
    const DWORD length = StorePath(place);
    place.path[length < kPathCapacity ? length : kPathCapacity - 1] = 0;
    return place.path;
}

} // namespace

ReportedPaths::ReportedPaths() : _isOutermost(reportsInProgress++ == 0)
{
    if (_isOutermost)
        knownCount = 0;
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
    {
        MEMORY_BASIC_INFORMATION memory = {};
        if (entry.address != nullptr && VirtualQuery(entry.address, &memory, sizeof memory) != 0 &&
            memory.State == MEM_COMMIT)
            ReportLine(L" [called by %s]", PathOf(static_cast<HMODULE>(memory.AllocationBase)));
    }
}

} // namespace qx
