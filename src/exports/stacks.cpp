#include "stacks/caller_lines.h"
#include "stacks/callers.h"

#include "core/debug_line.h"
#include "exports/guard.h"

#include <qxut23/stacks.h>

#include <cstdint>

using namespace qx;

void UtilStackTrace(std::uint32_t, std::uint32_t skip)
{
    constexpr std::uint32_t kLongestSkip = 256;
    constexpr std::uint32_t kShownFrames = 20;
    if (skip > kLongestSkip || !UtilIsDebugActive())
        return;
    // Captured here, because the addresses to skip are counted from this function.
    scCaller entries[kLongestSkip + kShownFrames];
    const unsigned count = CaptureCallers(entries, skip + kShownFrames);
    Guarded([&] { WriteCallerModules(entries, count, skip); });
}

void UtilListModules(void)
{
    if (UtilIsDebugActive())
        Guarded([] { WriteModuleRegions(); });
}
