// The base of COM objects.
#pragma once

#include "com/reference_count.h"

#include <objidl.h>
#include <winerror.h>

namespace qxplatform
{

// Starts with one reference, and is deleted when the last one is released. A derived class returns its interfaces from
// FindInterface. In the vtable, the functions declared here come after the functions of the first interface.
template <class... Interfaces>
class CountedObject : public Interfaces...
{
public:
    CountedObject(const CountedObject&) = delete;
    CountedObject& operator=(const CountedObject&) = delete;

    HRESULT QueryInterface(REFIID riid, void** object) override
    {
        if (object == nullptr)
            return E_POINTER;
        *object = FindInterface(riid);
        if (*object == nullptr)
            return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }

    ULONG AddRef() override { return _references.Add(); }

    ULONG Release() override
    {
        const ULONG references = _references.Drop();
        if (references == 0)
            delete this;
        return references;
    }

protected:
    CountedObject() = default;
    virtual ~CountedObject() = default;

    // Returns null for an interface that the object doesn't have.
    virtual void* FindInterface(REFIID riid) = 0;

private:
    ReferenceCount _references;
};

} // namespace qxplatform
