#include "files/iunknown_impl.h"

#include <combaseapi.h>

namespace qx
{

ULONG clsIUnknownImpl::NonDelegatingAddRef()
{
    return _referenceCount.fetch_add(1, std::memory_order_relaxed) + 1;
}

HRESULT clsIUnknownImpl::QueryOwnInterface(IUnknown* identity, REFIID iid, void** object)
{
    if (object == nullptr)
    {
        return E_POINTER;
    }
    *object = nullptr;
    if (IsEqualIID(iid, IID_IUnknown))
    {
        identity->AddRef();
        *object = identity;
        return S_OK;
    }
    if (IsEqualIID(iid, IID_IMarshal))
    {
        if (!_marshaler && FAILED(CoCreateFreeThreadedMarshaler(identity, _marshaler.Receive())))
        {
            return E_NOINTERFACE;
        }
        return _marshaler->QueryInterface(iid, object);
    }
    return E_NOINTERFACE;
}

} // namespace qx
