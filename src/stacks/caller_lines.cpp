#include "stacks/caller_lines.h"

#include "core/debug_line.h"
#include "core/debugger.h"
#include "diag/report.h"
#include "module/module_paths.h"

#include <windows.h>

#include <algorithm>
#include <cstdint>

namespace qx
{
namespace
{

constexpr unsigned kMostDumpedFrames = 200;

void DumpForFailure(int frames)
{
    DumpCallers(1, static_cast<unsigned>(std::max(frames, 0))); // skips this function
}

} // namespace

void PrepareStacks()
{
    PrepareCaptures();
    SetStackTraceHook(&DumpForFailure);
}

[[gnu::noinline]] void DumpCallers(unsigned skip, unsigned count)
{
    if (!UtilIsDebugActive())
        return;
    scCaller entries[kMostDumpedFrames];
    const unsigned wanted = std::min(count, kMostDumpedFrames) + std::min(skip, kMostDumpedFrames);
    const unsigned captured = CaptureCallers(entries, std::min(wanted, kMostDumpedFrames));
    const unsigned first = std::min(skip, captured);
    DebugLine(L"%d traces", static_cast<int>(captured - first));
    for (unsigned index = first; index < captured; ++index)
        DebugLine(L"  %#p", entries[index].address);
}

void WriteCallerModules(const scCaller* entries, unsigned count, unsigned skip)
{
    for (unsigned index = skip; index < count; ++index)
    {
        MEMORY_BASIC_INFORMATION region;
        if (VirtualQuery(entries[index].address, &region, sizeof region) == 0 || region.State == MEM_FREE)
            continue;
        const String path = ModulePath(static_cast<HMODULE>(region.AllocationBase));
        if (!path.IsEmpty())
            DebugLine(L"\n%s", String(String::kFormatted, L" [called by %s]", path.Text()).Text());
    }
    DebugLine(L"\n%s", L"");
}

void WriteModuleRegions()
{
    const ReportBlock block(L"Memory image addresses of modules:");
    std::uintptr_t address = 0;
    for (MEMORY_BASIC_INFORMATION region;
         VirtualQuery(reinterpret_cast<const void*>(address), &region, sizeof region) != 0;
         address += region.RegionSize)
    {
        if (region.State == MEM_FREE || region.BaseAddress != region.AllocationBase)
            continue;
        const String path = ModulePath(static_cast<HMODULE>(region.AllocationBase));
        if (path.IsEmpty())
            continue;
        const std::uintptr_t last = address + (region.RegionSize - 1);
        // Shows at least eight digits, and more for addresses that need them.
        ReportLine(L"0x%08I64x-0x%08I64x: %s", static_cast<std::uint64_t>(address), static_cast<std::uint64_t>(last),
            path.Text());
    }
}

} // namespace qx
