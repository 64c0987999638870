// Base class of the library's reference-counted objects.
#pragma once

#include "files/allocation_count.h"
#include "files/auto_release.h"

#include <windows.h>

#include <objidl.h>

#include <atomic>
#include <cstdint>

namespace qx
{

// The first three vtable slots of each reference-counted object. QueryInterface, AddRef and Release of the implemented
// interfaces call them.
class INonDelegatingUnknown
{
public:
    virtual HRESULT STDMETHODCALLTYPE NonDelegatingQueryInterface(REFIID iid, void** object) = 0;
    virtual ULONG STDMETHODCALLTYPE NonDelegatingAddRef() = 0;
    virtual ULONG STDMETHODCALLTYPE NonDelegatingRelease() = 0;

protected:
    ~INonDelegatingUnknown() = default;
};

// Holds an atomic reference count and the free-threaded marshaler, which lets any thread use the object's interfaces as
// plain pointers. The count starts at 0, so that the object may also live on the stack.
//
// The destructor isn't virtual, to leave the fourth vtable slot to the derived class. A derived class declares its own
// virtual destructor after its functions and implements NonDelegatingRelease as ReleaseObject(this).
class clsIUnknownImpl : public INonDelegatingUnknown, public clsAllocationCountVerifier<clsIUnknownImpl, 0>
{
public:
    ULONG STDMETHODCALLTYPE NonDelegatingAddRef() override;

    // If false, the object isn't deleted when its count drops to 0; its owner destroys it.
    void SetDeleteOnLastRelease(bool deleteIt) { _deleteOnLastRelease = deleteIt; }

protected:
    clsIUnknownImpl() = default;
    clsIUnknownImpl(const clsIUnknownImpl&) = delete;
    clsIUnknownImpl& operator=(const clsIUnknownImpl&) = delete;
    ~clsIUnknownImpl() = default;

    // Implements the interfaces common to all objects: IUnknown, which is `identity`, and IMarshal. Returns
    // E_NOINTERFACE for all others.
    HRESULT QueryOwnInterface(IUnknown* identity, REFIID iid, void** object);

    template <class Derived>
    static ULONG ReleaseObject(Derived* object)
    {
        const std::uint32_t left = object->_referenceCount.fetch_sub(1, std::memory_order_acq_rel) - 1;
        if (left == 0 && object->_deleteOnLastRelease)
            delete object;
        return left;
    }

private:
    std::atomic<std::uint32_t> _referenceCount = 0;
    bool _deleteOnLastRelease = true;
    clsAutoRelease<IUnknown*> _marshaler;
};

} // namespace qx
