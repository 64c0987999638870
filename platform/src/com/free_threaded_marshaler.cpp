// The marshaler aggregated by objects that may be called from any thread.
#include "com/reference_count.h"

#include <combaseapi.h>

#include <new>

namespace qxplatform
{

namespace
{

// It has two interfaces: IUnknown for the owner, with its own reference count, and IMarshal for everyone else, whose
// IUnknown functions belong to the outer object.
class FreeThreadedMarshaler final : public IMarshal
{
public:
    explicit FreeThreadedMarshaler(IUnknown* outer) : _inner(*this), _outer(outer != nullptr ? outer : &_inner) {}

    IUnknown* Inner() { return &_inner; }

    HRESULT QueryInterface(REFIID riid, void** object) override { return _outer->QueryInterface(riid, object); }
    ULONG AddRef() override { return _outer->AddRef(); }
    ULONG Release() override { return _outer->Release(); }

    // Objects are passed between threads as plain pointers and never leave the process, so nothing is ever written to a
    // stream. The functions for that fail with their documented code.
    HRESULT GetUnmarshalClass(REFIID, void*, DWORD, void*, DWORD, CLSID* clsid) override
    {
        if (clsid != nullptr)
            *clsid = CLSID_NULL;
        return E_FAIL;
    }
    HRESULT GetMarshalSizeMax(REFIID, void*, DWORD, void*, DWORD, DWORD* size) override
    {
        if (size != nullptr)
            *size = 0;
        return E_FAIL;
    }
    HRESULT MarshalInterface(IStream*, REFIID, void*, DWORD, void*, DWORD) override { return E_FAIL; }
    HRESULT UnmarshalInterface(IStream*, REFIID, void** object) override
    {
        if (object != nullptr)
            *object = nullptr;
        return E_FAIL;
    }
    HRESULT ReleaseMarshalData(IStream*) override { return E_FAIL; }
    HRESULT DisconnectObject(DWORD) override { return S_OK; } // there are no connections

private:
    class InnerUnknown final : public IUnknown
    {
    public:
        explicit InnerUnknown(FreeThreadedMarshaler& owner) : _owner(owner) {}

        HRESULT QueryInterface(REFIID riid, void** object) override
        {
            if (object == nullptr)
                return E_POINTER;
            *object = nullptr;
            if (riid == IID_IUnknown)
                *object = static_cast<IUnknown*>(this);
            else if (riid == IID_IMarshal)
                *object = static_cast<IMarshal*>(&_owner);
            else
                return E_NOINTERFACE;
            static_cast<IUnknown*>(*object)->AddRef();
            return S_OK;
        }
        ULONG AddRef() override { return _references.Add(); }
        ULONG Release() override
        {
            const ULONG references = _references.Drop();
            if (references == 0)
                delete &_owner;
            return references;
        }

    private:
        FreeThreadedMarshaler& _owner;
        ReferenceCount _references;
    };

    ~FreeThreadedMarshaler() = default;

    InnerUnknown _inner;
    IUnknown* const _outer;
};

} // namespace

} // namespace qxplatform

HRESULT WINAPI CoCreateFreeThreadedMarshaler(LPUNKNOWN outer, LPUNKNOWN* marshaler)
{
    if (marshaler == nullptr)
        return E_INVALIDARG;
    *marshaler = nullptr;
    const auto object = new (std::nothrow) qxplatform::FreeThreadedMarshaler(outer);
    if (object == nullptr)
        return E_OUTOFMEMORY;
    *marshaler = object->Inner();
    return S_OK;
}
