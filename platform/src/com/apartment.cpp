// Per-thread COM state: initialisation count and apartment model.
//
// All objects of the layer can be called from any thread, so the apartment model has no other effect.
#include <objbase.h>

namespace
{
struct Apartment
{
    ULONG initialisations = 0;
    bool multithreaded = false;
};

thread_local Apartment currentApartment;
} // namespace

HRESULT WINAPI CoInitializeEx(LPVOID reserved, DWORD model)
{
    constexpr DWORD kKnownFlags = COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE | COINIT_SPEED_OVER_MEMORY;
    if (reserved != nullptr || (model & ~kKnownFlags) != 0)
        return E_INVALIDARG;
    const bool multithreaded = (model & COINIT_APARTMENTTHREADED) == 0;
    Apartment& apartment = currentApartment;
    if (apartment.initialisations == 0)
    {
        apartment = {1, multithreaded};
        return S_OK;
    }
    if (apartment.multithreaded != multithreaded)
        return RPC_E_CHANGED_MODE;
    ++apartment.initialisations;
    return S_FALSE;
}

void WINAPI CoUninitialize()
{
    if (currentApartment.initialisations != 0)
        --currentApartment.initialisations;
}
