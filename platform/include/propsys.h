// Property stores. The layer has none; the interface is for objects implemented elsewhere.
#pragma once

#include <oaidl.h>

typedef struct _tagpropertykey
{
    GUID fmtid;
    DWORD pid;
} PROPERTYKEY;

// A value of a property. Union members that the library doesn't use are left out.
typedef struct tagPROPVARIANT
{
    VARTYPE vt;
    WORD wReserved1;
    WORD wReserved2;
    WORD wReserved3;
    union
    {
        LPSTR pszVal;
        LPWSTR pwszVal;
        BSTR bstrVal;
        LONG lVal;
        DATE date;
        FILETIME filetime;
        struct
        {
            ULONG cElems;
            PVOID pElems;
        } cac;
    };
} PROPVARIANT;

#ifdef __cplusplus

static_assert(sizeof(PROPVARIANT) == 24 && offsetof(PROPVARIANT, filetime) == 8);

#define REFPROPERTYKEY const PROPERTYKEY&
#define REFPROPVARIANT const PROPVARIANT&

struct IPropertyStore : public IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE GetCount(DWORD* cProps) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetAt(DWORD iProp, PROPERTYKEY* pkey) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetValue(REFPROPERTYKEY key, PROPVARIANT* pv) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetValue(REFPROPERTYKEY key, REFPROPVARIANT propvar) = 0;
    virtual HRESULT STDMETHODCALLTYPE Commit() = 0;
};

#else
typedef struct IPropertyStore IPropertyStore;
#endif
