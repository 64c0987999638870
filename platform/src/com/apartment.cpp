// Objects may be called from any thread, so a thread's apartment is only a record: its model, and how often the thread
// has entered COM.
#include "com/apartment.h"

#include <combaseapi.h>

namespace
{

struct Apartment
{
    unsigned entries = 0;
    bool isSingleThreaded = false;
};

constinit thread_local Apartment ownApartment;

} // namespace

bool qxplatform::HasEnteredCom()
{
    return ownApartment.entries != 0;
}

HRESULT WINAPI CoInitializeEx(LPVOID reserved, DWORD model)
{
    if (reserved != nullptr)
        return E_INVALIDARG;
    const bool isSingleThreaded = (model & COINIT_APARTMENTTHREADED) != 0;
    if (ownApartment.entries == 0)
        ownApartment.isSingleThreaded = isSingleThreaded;
    else if (ownApartment.isSingleThreaded != isSingleThreaded)
        return RPC_E_CHANGED_MODE;
    return ownApartment.entries++ == 0 ? S_OK : S_FALSE;
}

void WINAPI CoUninitialize(void)
{
    if (ownApartment.entries != 0)
        --ownApartment.entries;
}
