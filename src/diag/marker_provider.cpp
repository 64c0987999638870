#include "diag/marker_provider.h"

#include "core/debug_line.h"
#include "core/registry/registry.h"
#include "core/system_values.h"
#include "diag/marker_manifest.h"

#include <new>
#include <utility>

namespace qx
{
namespace
{

constexpr GUID kMarkerProviderId = {0xAE1860CF, 0xEE7C, 0x4659, {0xBB, 0x7B, 0xC7, 0xAE, 0xD0, 0x0F, 0x23, 0xE4}};
constexpr wchar_t kMarkerKey[] = L"Software\\trelmo";
constexpr wchar_t kMarkerValue[] = L"SupportConcurrencyVisualizer";
constexpr unsigned short kFirstSystemWithTracing = 0x0600;

std::atomic<clsAdvAPI32*> replacedTracing = nullptr;

bool AreMarkersAllowed()
{
    bool isAllowed = false;
    if (SystemVersion() >= kFirstSystemWithTracing)
        clsRegistryList(HKEY_CURRENT_USER, kMarkerKey, clsRegistryList::kRead).GetBool(kMarkerValue, isAllowed, false);
    return isAllowed;
}

void NTAPI OnMarkersEnabled(LPCGUID, ULONG isEnabled, UCHAR level, ULONGLONG anyKeywords, ULONGLONG allKeywords,
    PEVENT_FILTER_DESCRIPTOR, void* context)
{
    auto& record = *static_cast<scMarkerProvider*>(context);
    record.level.store(level, std::memory_order_relaxed);
    record.anyKeywords.store(anyKeywords, std::memory_order_relaxed);
    record.allKeywords.store(allKeywords, std::memory_order_relaxed);
    record.enabled.store(isEnabled != 0, std::memory_order_release);
}

std::int32_t MakeProviderRecord(std::unique_ptr<scMarkerProvider>& result)
{
    std::unique_ptr<scMarkerProvider> record(new (std::nothrow) scMarkerProvider);
    if (!record)
        return E_OUTOFMEMORY;
    record->id = kMarkerProviderId;
    record->manifest.reset(new (std::nothrow) char[kMarkerManifestSize]);
    if (!record->manifest)
        return E_OUTOFMEMORY;
    record->manifestLength = static_cast<std::uint32_t>(PrintMarkerManifest(record->manifest.get(), record->id));
    if (record->manifestLength == 0)
        return E_INVALIDARG;
    auto& registerProvider = TracingLibrary().p_EventRegister;
    const ULONG failure = registerProvider.IsThere()
                              ? registerProvider(&record->id, &OnMarkersEnabled, record.get(), &record->registration)
                              : 1;
    if (failure != 0)
        return MarkerError(failure);
    result = std::move(record);
    return 0;
}

} // namespace

LSTATUS AllowMarkers()
{
    HKEY key = nullptr;
    LSTATUS status =
        RegCreateKeyExW(HKEY_CURRENT_USER, kMarkerKey, 0, nullptr, 0, KEY_SET_VALUE, nullptr, &key, nullptr);
    if (status != ERROR_SUCCESS)
        return status;
    constexpr wchar_t kAllowed[] = L"True";
    status = RegSetValueExW(key, kMarkerValue, 0, REG_SZ, reinterpret_cast<const BYTE*>(kAllowed), sizeof(kAllowed));
    RegCloseKey(key);
    return status;
}

clsAdvAPI32& TracingLibrary()
{
    clsAdvAPI32* const replaced = replacedTracing.load(std::memory_order_acquire);
    return replaced ? *replaced : AdvAPI32();
}

clsAdvAPI32* SetTracingLibrary(clsAdvAPI32* library)
{
    return replacedTracing.exchange(library);
}

clsConcurrencyVisualizerProvider::clsConcurrencyVisualizerProvider() : _isAllowed(AreMarkersAllowed())
{
    if (!_isAllowed)
        return;
    if (MakeProviderRecord(_record) < 0)
        DebugLine(L"ERROR initializing Marker Provider");
    else if (_record)
        _isActive = _record->enabled.load(std::memory_order_acquire) != 0;
}

clsConcurrencyVisualizerProvider::~clsConcurrencyVisualizerProvider()
{
    auto& unregister = TracingLibrary().p_EventUnregister;
    if (!_record)
        return;
    if (unregister.IsThere())
        unregister(_record->registration); // waits for callbacks in progress
    else
        _record.release(); // the callback may still be called, so its context must stay
}

HRESULT clsConcurrencyVisualizerProvider::NonDelegatingQueryInterface(REFIID, void** object)
{
    if (object)
        *object = nullptr;
    return E_NOINTERFACE;
}

ULONG clsConcurrencyVisualizerProvider::NonDelegatingRelease()
{
    return ReleaseObject(this);
}

} // namespace qx
