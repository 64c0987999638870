// IUnknown, the root of all COM interfaces.
#pragma once

#include <basetyps.h>
#include <wtypes.h>

EXTERN_C const IID IID_IUnknown QXP(IID_IUnknown);

#ifdef __cplusplus

// In all interfaces the order of the functions is the order of their vtable slots, which callers rely on. A virtual
// destructor would occupy slots, too. Objects are destroyed through their reference count and never deleted through an
// interface.
struct IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppvObject) = 0;
    virtual ULONG STDMETHODCALLTYPE AddRef() = 0;
    virtual ULONG STDMETHODCALLTYPE Release() = 0;
};

#else
typedef struct IUnknown IUnknown;
#endif

typedef IUnknown* LPUNKNOWN;
