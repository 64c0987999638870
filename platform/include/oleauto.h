// Texts, variants and safe arrays of automation.
#pragma once

#include <oaidl.h>

EXTERN_C_START

QXPLATFORM_API BSTR WINAPI SysAllocString(const OLECHAR* text);
QXPLATFORM_API BSTR WINAPI SysAllocStringLen(const OLECHAR* text, UINT length);
QXPLATFORM_API BSTR WINAPI SysAllocStringByteLen(LPCSTR bytes, UINT length);
QXPLATFORM_API INT WINAPI SysReAllocStringLen(BSTR* bstr, const OLECHAR* text, UINT length);
QXPLATFORM_API void WINAPI SysFreeString(BSTR bstr);
QXPLATFORM_API UINT WINAPI SysStringLen(BSTR bstr);
QXPLATFORM_API UINT WINAPI SysStringByteLen(BSTR bstr);

// Flags of a change of type.
#define VARIANT_NOVALUEPROP 0x01
#define VARIANT_ALPHABOOL 0x02 // "True" and "False" instead of "-1" and "0"
#define VARIANT_NOUSEROVERRIDE 0x04

QXPLATFORM_API void WINAPI VariantInit(VARIANTARG* pvarg);
QXPLATFORM_API HRESULT WINAPI VariantClear(VARIANTARG* pvarg);
QXPLATFORM_API HRESULT WINAPI VariantCopy(VARIANTARG* pvargDest, const VARIANTARG* pvargSrc);
QXPLATFORM_API HRESULT WINAPI VariantCopyInd(VARIANT* pvarDest, const VARIANTARG* pvargSrc);
QXPLATFORM_API HRESULT WINAPI VariantChangeType(
    VARIANTARG* pvargDest, const VARIANTARG* pvarSrc, USHORT wFlags, VARTYPE vt);
QXPLATFORM_API HRESULT WINAPI VariantChangeTypeEx(
    VARIANTARG* pvargDest, const VARIANTARG* pvarSrc, LCID lcid, USHORT wFlags, VARTYPE vt);

// Results of a comparison.
#define VARCMP_LT 0
#define VARCMP_EQ 1
#define VARCMP_GT 2
#define VARCMP_NULL 3

QXPLATFORM_API HRESULT WINAPI VarCmp(LPVARIANT pvarLeft, LPVARIANT pvarRight, LCID lcid, ULONG dwFlags);

QXPLATFORM_API HRESULT WINAPI VarR8FromCy(CY cyIn, DOUBLE* pdblOut);
QXPLATFORM_API HRESULT WINAPI VarR8FromDec(const DECIMAL* pdecIn, DOUBLE* pdblOut);

// Parts of a date that a text gives, or that it shows.
#define VAR_TIMEVALUEONLY 0x01
#define VAR_DATEVALUEONLY 0x02

QXPLATFORM_API HRESULT WINAPI VarDateFromStr(const OLECHAR* strIn, LCID lcid, ULONG dwFlags, DATE* pdateOut);
QXPLATFORM_API HRESULT WINAPI VarBstrFromDate(DATE dateIn, LCID lcid, ULONG dwFlags, BSTR* pbstrOut);

QXPLATFORM_API INT WINAPI SystemTimeToVariantTime(LPSYSTEMTIME lpSystemTime, DOUBLE* pvtime);
QXPLATFORM_API INT WINAPI VariantTimeToSystemTime(DOUBLE vtime, LPSYSTEMTIME lpSystemTime);

QXPLATFORM_API SAFEARRAY* WINAPI SafeArrayCreate(VARTYPE vt, UINT cDims, SAFEARRAYBOUND* rgsabound);
QXPLATFORM_API SAFEARRAY* WINAPI SafeArrayCreateVector(VARTYPE vt, LONG lLbound, ULONG cElements);
QXPLATFORM_API HRESULT WINAPI SafeArrayDestroy(SAFEARRAY* psa);
QXPLATFORM_API HRESULT WINAPI SafeArrayCopy(SAFEARRAY* psa, SAFEARRAY** ppsaOut);
QXPLATFORM_API HRESULT WINAPI SafeArrayLock(SAFEARRAY* psa);
QXPLATFORM_API HRESULT WINAPI SafeArrayUnlock(SAFEARRAY* psa);
QXPLATFORM_API HRESULT WINAPI SafeArrayAccessData(SAFEARRAY* psa, void** ppvData);
QXPLATFORM_API HRESULT WINAPI SafeArrayUnaccessData(SAFEARRAY* psa);
QXPLATFORM_API UINT WINAPI SafeArrayGetDim(SAFEARRAY* psa);
QXPLATFORM_API UINT WINAPI SafeArrayGetElemsize(SAFEARRAY* psa);
QXPLATFORM_API HRESULT WINAPI SafeArrayGetLBound(SAFEARRAY* psa, UINT nDim, LONG* plLbound);
QXPLATFORM_API HRESULT WINAPI SafeArrayGetUBound(SAFEARRAY* psa, UINT nDim, LONG* plUbound);
QXPLATFORM_API HRESULT WINAPI SafeArrayGetVartype(SAFEARRAY* psa, VARTYPE* pvt);
QXPLATFORM_API HRESULT WINAPI SafeArrayGetElement(SAFEARRAY* psa, LONG* rgIndices, void* pv);
QXPLATFORM_API HRESULT WINAPI SafeArrayPutElement(SAFEARRAY* psa, LONG* rgIndices, void* pv);

EXTERN_C_END
