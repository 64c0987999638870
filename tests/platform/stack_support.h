// Helpers shared by the tests of the stack.
#pragma once

#include "stack_probe.h"
#include "threads_support.h"

#include <algorithm>
#include <vector>

namespace qxtest
{

using Addresses = std::vector<void*>;

[[gnu::noinline]] inline Addresses CapturedAddresses()
{
    Addresses addresses(100);
    addresses.resize(RtlCaptureStackBackTrace(0, 100, addresses.data(), nullptr));
    return addresses;
}

// The captured addresses in the frames of the probe, and the addresses that its functions noted, innermost first.
struct ProbeResult
{
    Addresses captured;
    Addresses noted;

    // True if all noted addresses were captured, in their order. Frames of foreign functions may be in between.
    bool IsComplete() const
    {
        auto next = captured.begin();
        for (void* const address : noted)
        {
            next = std::find(next, captured.end(), address);
            if (next == captured.end())
                return false;
            ++next;
        }
        return !noted.empty();
    }
};

inline ProbeResult RunProbe(ProbeFunction probe)
{
    static ProbeResult result;
    ProbeFrames frames;
    frames.callback = [](ProbeFrames&)
    {
        result.captured = CapturedAddresses();
    };
    probe(frames);
    result.noted.assign(frames.address, frames.address + frames.count);
    std::reverse(result.noted.begin(), result.noted.end());
    return result;
}

class ProbeLibrary
{
public:
    explicit ProbeLibrary(const char* name)
        : module(LoadLibraryW(Text::Widen(std::string(QXUT_STACK_PROBE_FOLDER "/") + name)))
    {
    }
    ProbeLibrary(const ProbeLibrary&) = delete;
    ProbeLibrary& operator=(const ProbeLibrary&) = delete;
    ~ProbeLibrary() { FreeLibrary(module); }

    ProbeFunction Function() const { return reinterpret_cast<ProbeFunction>(GetProcAddress(module, "Probe")); }

    HMODULE module;
};

} // namespace qxtest
