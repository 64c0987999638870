// Automation types: variants, safe arrays, and IDispatch.
#pragma once

#include <objidl.h>

EXTERN_C const IID IID_IDispatch QXP(IID_IDispatch);

typedef LONG DISPID;

typedef struct tagVARIANT VARIANT;
typedef VARIANT VARIANTARG;
typedef VARIANT *LPVARIANT, *LPVARIANTARG;

typedef struct tagDISPPARAMS DISPPARAMS;
typedef struct tagEXCEPINFO EXCEPINFO;

#ifdef __cplusplus

struct ITypeInfo;

struct IDispatch : public IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* pctinfo) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT iTInfo, LCID lcid, ITypeInfo** ppTInfo) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetIDsOfNames(
        REFIID riid, LPOLESTR* rgszNames, UINT cNames, LCID lcid, DISPID* rgDispId) = 0;
    virtual HRESULT STDMETHODCALLTYPE Invoke(DISPID dispIdMember, REFIID riid, LCID lcid, WORD wFlags,
        DISPPARAMS* pDispParams, VARIANT* pVarResult, EXCEPINFO* pExcepInfo, UINT* puArgErr) = 0;
};

struct IRecordInfo;

#else
typedef struct IDispatch IDispatch;
typedef struct IRecordInfo IRecordInfo;
#endif

typedef struct tagSAFEARRAYBOUND
{
    ULONG cElements;
    LONG lLbound;
} SAFEARRAYBOUND, *LPSAFEARRAYBOUND;

// The bounds are in reverse order: the last dimension, which varies slowest, comes first.
typedef struct tagSAFEARRAY
{
    USHORT cDims;
    USHORT fFeatures; // FADF_...
    ULONG cbElements;
    ULONG cLocks;
    PVOID pvData;
    SAFEARRAYBOUND rgsabound[1];
} SAFEARRAY, *LPSAFEARRAY;

// The array's memory was allocated by the caller, who also frees it.
#define FADF_AUTO 0x1
#define FADF_STATIC 0x2
#define FADF_EMBEDDED 0x4
// Data precedes the array: the description of a record, an interface identifier or the element type.
#define FADF_HAVEIID 0x40
#define FADF_HAVEVARTYPE 0x80
// The elements own resources.
#define FADF_BSTR 0x100
#define FADF_UNKNOWN 0x200
#define FADF_DISPATCH 0x400
#define FADF_VARIANT 0x800

struct tagVARIANT
{
    union
    {
        struct
        {
            VARTYPE vt;
            WORD wReserved1;
            WORD wReserved2;
            WORD wReserved3;
            union
            {
                LONGLONG llVal;
                LONG lVal;
                BYTE bVal;
                SHORT iVal;
                FLOAT fltVal;
                DOUBLE dblVal;
                VARIANT_BOOL boolVal;
                SCODE scode;
                CY cyVal;
                DATE date;
                BSTR bstrVal;
                IUnknown* punkVal;
                IDispatch* pdispVal;
                SAFEARRAY* parray;
                BYTE* pbVal;
                SHORT* piVal;
                LONG* plVal;
                LONGLONG* pllVal;
                FLOAT* pfltVal;
                DOUBLE* pdblVal;
                VARIANT_BOOL* pboolVal;
                SCODE* pscode;
                CY* pcyVal;
                DATE* pdate;
                BSTR* pbstrVal;
                IUnknown** ppunkVal;
                IDispatch** ppdispVal;
                SAFEARRAY** pparray;
                VARIANT* pvarVal;
                PVOID byref;
                CHAR cVal;
                USHORT uiVal;
                ULONG ulVal;
                ULONGLONG ullVal;
                INT intVal;
                UINT uintVal;
                DECIMAL* pdecVal;
                CHAR* pcVal;
                USHORT* puiVal;
                ULONG* pulVal;
                ULONGLONG* pullVal;
                INT* pintVal;
                UINT* puintVal;
                struct
                {
                    PVOID pvRecord;
                    IRecordInfo* pRecInfo;
                };
            };
        };
        DECIMAL decVal; // overlays `vt` too, which occupies the decimal's reserved word
    };
};

#ifdef __cplusplus
static_assert(sizeof(VARIANT) == 24 && offsetof(VARIANT, llVal) == 8);
static_assert(sizeof(SAFEARRAY) == 32 && offsetof(SAFEARRAY, rgsabound) == 24);
#endif
