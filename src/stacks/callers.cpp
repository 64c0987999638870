#include "stacks/callers.h"

#include "core/system_values.h"
#include "module/late_libraries.h"

#include <windows.h>

#include <algorithm>
#include <atomic>

namespace qx
{
namespace
{

using CaptureFunction = LateFunction<WORD(DWORD, DWORD, void**, DWORD*)>;

using CaptureFromFunction = WORD(WINAPI*)(const CallSite*, DWORD, void**);

constexpr unsigned kMostFrames = 200;
constexpr unsigned kMostFramesOfOldSystems = 61;
constexpr unsigned short kFirstWithoutLimit = 0x0600;

struct Capture
{
    std::atomic<const CaptureFunction*> function = nullptr;
    std::atomic<CaptureFromFunction> from = nullptr;
    std::atomic<unsigned> mostFrames = 0; // 0 until the functions have been resolved
};

constinit Capture capture;

} // namespace

void PrepareCaptures()
{
    auto& backTrace = Kernel32().p_RtlCaptureStackBackTrace;
    if (backTrace.IsThere())
        capture.function.store(&backTrace, std::memory_order_relaxed);
    LateProcedure& from = Kernel32().p_QxCaptureFrom;
    if (from.IsThere())
        capture.from.store(reinterpret_cast<CaptureFromFunction>(from.Address()), std::memory_order_relaxed);
    capture.mostFrames.store(
        SystemVersion() >= kFirstWithoutLimit ? kMostFrames : kMostFramesOfOldSystems, std::memory_order_release);
}

[[gnu::noinline]] unsigned CaptureCallers(scCaller* entries, unsigned count) noexcept
{
    unsigned mostFrames = capture.mostFrames.load(std::memory_order_acquire);
    if (mostFrames == 0)
    {
        PrepareCaptures();
        mostFrames = capture.mostFrames.load(std::memory_order_acquire);
    }
    const CaptureFunction* const function = capture.function.load(std::memory_order_relaxed);
    if (function == nullptr)
        return 0;
    void* addresses[kMostFrames];
    const unsigned frames = (*function)(1, std::min(count, mostFrames), addresses, nullptr);
    for (unsigned index = 0; index < frames; ++index)
        entries[index].address = addresses[index];
    return frames;
}

unsigned CaptureFrom(const CallSite& site, void** addresses, unsigned count) noexcept
{
    const CaptureFromFunction function = capture.from.load(std::memory_order_acquire);
    return function != nullptr && site.stackPointer != 0 ? function(&site, count, addresses) : 0;
}

} // namespace qx
