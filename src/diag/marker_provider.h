// A provider of markers: its registration with the system's event tracing.
#pragma once

#include "files/iunknown_impl.h"
#include "module/late_libraries.h"

#include <atomic>
#include <cstdint>
#include <memory>

namespace qx
{

// A provider as event writers use it. The enable callback changes the four values of the session at any time and on any
// thread; a change takes effect at the next event.
struct alignas(32) scMarkerProvider
{
    GUID id = {};
    REGHANDLE registration = 0;
    std::atomic<std::uint32_t> enabled = 0; // 1 while a session listens
    std::atomic<std::uint8_t> level = 0;
    std::atomic<std::uint64_t> anyKeywords = 0;
    std::atomic<std::uint64_t> allKeywords = 0;
    std::unique_ptr<char[]> manifest;
    std::uint32_t manifestLength = 0;
    std::atomic<std::uint32_t> isManifestSent = 0;
    std::atomic<std::int32_t> lastSpanId = INT32_MIN;
};

// Registers itself if the user's settings allow markers. Reference counted: a series and its
// children share it.
class clsConcurrencyVisualizerProvider final : public clsIUnknownImpl
{
public:
    clsConcurrencyVisualizerProvider();
    virtual ~clsConcurrencyVisualizerProvider();

    HRESULT STDMETHODCALLTYPE NonDelegatingQueryInterface(REFIID iid, void** object) override;
    ULONG STDMETHODCALLTYPE NonDelegatingRelease() override;

    bool IsAllowed() const { return _isAllowed; }
    // Returns true if a session was already listening when the provider was registered.
    bool IsActive() const { return _isActive; }
    // Returns null unless the provider is registered.
    scMarkerProvider* Record() const { return _record.get(); }

private:
    bool _isAllowed = false;
    std::unique_ptr<scMarkerProvider> _record;
    bool _isActive = false;
};

// Changes the user's settings so that markers are allowed. Returns an error code of the registry.
LSTATUS AllowMarkers();

// The library that offers the system's event tracing. Tests may replace it; the function returns the previous one, and
// null restores the system's.
clsAdvAPI32& TracingLibrary();
clsAdvAPI32* SetTracingLibrary(clsAdvAPI32* library);

// Turns a result of the event tracing into an error code. Results that aren't positive stay as they are.
constexpr std::int32_t MarkerError(std::uint32_t result)
{
    const auto asSigned = static_cast<std::int32_t>(result);
    return asSigned > 0 ? static_cast<std::int32_t>((result & 0xFFFF) | 0x80070000) : asSigned;
}

} // namespace qx
