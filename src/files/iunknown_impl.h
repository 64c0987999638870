// Base of the library's reference-counted objects.
#pragma once

#include "files/allocation_count.h"
#include "files/auto_release.h"

#include <windows.h>

#include <objidl.h>

#include <atomic>
#include <cstdint>

namespace qx
{

// The slots that come first in each of these objects; an interface's own three entries call them.
class INonDelegatingUnknown
{
public:
    virtual HRESULT STDMETHODCALLTYPE NonDelegatingQueryInterface(REFIID iid, void** object) = 0;
    virtual ULONG STDMETHODCALLTYPE NonDelegatingAddRef() = 0;
    virtual ULONG STDMETHODCALLTYPE NonDelegatingRelease() = 0;

protected:
    ~INonDelegatingUnknown() = default;
};

// Holds an atomic count that starts at 0, so that an object may also live on the stack, and the free-threaded
// marshaler, which lets any thread use the object's interfaces as plain pointers.
//
// The destructor isn't virtual, to keep the fourth slot for the derived class: the derived class declares its own
// virtual destructor behind its operations, and its NonDelegatingRelease is ReleaseObject(this).
class clsIUnknownImpl : public INonDelegatingUnknown, public clsAllocationCountVerifier<clsIUnknownImpl, 0>
{
public:
    ULONG STDMETHODCALLTYPE NonDelegatingAddRef() override;

    // False keeps the object alive when its count falls to 0: someone else destroys it.
    void SetDeleteOnLastRelease(bool deleteIt) { _deleteOnLastRelease = deleteIt; }

protected:
    clsIUnknownImpl() = default;
    clsIUnknownImpl(const clsIUnknownImpl&) = delete;
    clsIUnknownImpl& operator=(const clsIUnknownImpl&) = delete;
    ~clsIUnknownImpl() = default;

    // The answer for the interfaces that every object has: IUnknown, which is `identity`, and IMarshal; E_NOINTERFACE
    // for all others.
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
