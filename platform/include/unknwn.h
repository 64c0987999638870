// IUnknown, the root of all interfaces.
#pragma once

#include <basetyps.h>
#include <wtypes.h>

EXTERN_C const IID IID_IUnknown QXP(IID_IUnknown);

#ifdef __cplusplus

// Here and in all interfaces the order of the functions is the order of their slots, which callers rely on; a virtual
// destructor would take slots too. Objects end by their count and are never deleted through an interface.
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
