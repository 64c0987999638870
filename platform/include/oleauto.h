// Strings, variants and safe arrays of automation.
#pragma once

#include <oaidl.h>

EXTERN_C_START

BSTR WINAPI SysAllocString(const OLECHAR* text) QXP(SysAllocString);
BSTR WINAPI SysAllocStringLen(const OLECHAR* text, UINT length) QXP(SysAllocStringLen);
BSTR WINAPI SysAllocStringByteLen(LPCSTR bytes, UINT length) QXP(SysAllocStringByteLen);
INT WINAPI SysReAllocStringLen(BSTR* bstr, const OLECHAR* text, UINT length) QXP(SysReAllocStringLen);
void WINAPI SysFreeString(BSTR bstr) QXP(SysFreeString);
UINT WINAPI SysStringLen(BSTR bstr) QXP(SysStringLen);
UINT WINAPI SysStringByteLen(BSTR bstr) QXP(SysStringByteLen);

void WINAPI VariantInit(VARIANTARG* pvarg) QXP(VariantInit);
HRESULT WINAPI VariantClear(VARIANTARG* pvarg) QXP(VariantClear);
HRESULT WINAPI VariantCopy(VARIANTARG* pvargDest, const VARIANTARG* pvargSrc) QXP(VariantCopy);
HRESULT WINAPI VariantCopyInd(VARIANT* pvarDest, const VARIANTARG* pvargSrc) QXP(VariantCopyInd);
HRESULT WINAPI VariantChangeType(VARIANTARG* pvargDest, const VARIANTARG* pvarSrc, USHORT wFlags, VARTYPE vt)
    QXP(VariantChangeType);
HRESULT WINAPI VariantChangeTypeEx(
    VARIANTARG* pvargDest, const VARIANTARG* pvarSrc, LCID lcid, USHORT wFlags, VARTYPE vt) QXP(VariantChangeTypeEx);

// Results of a comparison.
#define VARCMP_LT 0
#define VARCMP_EQ 1
#define VARCMP_GT 2
#define VARCMP_NULL 3

HRESULT WINAPI VarCmp(LPVARIANT pvarLeft, LPVARIANT pvarRight, LCID lcid, ULONG dwFlags) QXP(VarCmp);

HRESULT WINAPI VarR8FromCy(CY cyIn, DOUBLE* pdblOut) QXP(VarR8FromCy);
HRESULT WINAPI VarR8FromDec(const DECIMAL* pdecIn, DOUBLE* pdblOut) QXP(VarR8FromDec);

HRESULT WINAPI VarDateFromStr(const OLECHAR* strIn, LCID lcid, ULONG dwFlags, DATE* pdateOut) QXP(VarDateFromStr);
HRESULT WINAPI VarBstrFromDate(DATE dateIn, LCID lcid, ULONG dwFlags, BSTR* pbstrOut) QXP(VarBstrFromDate);

INT WINAPI SystemTimeToVariantTime(LPSYSTEMTIME lpSystemTime, DOUBLE* pvtime) QXP(SystemTimeToVariantTime);
INT WINAPI VariantTimeToSystemTime(DOUBLE vtime, LPSYSTEMTIME lpSystemTime) QXP(VariantTimeToSystemTime);

SAFEARRAY* WINAPI SafeArrayCreate(VARTYPE vt, UINT cDims, SAFEARRAYBOUND* rgsabound) QXP(SafeArrayCreate);
SAFEARRAY* WINAPI SafeArrayCreateVector(VARTYPE vt, LONG lLbound, ULONG cElements) QXP(SafeArrayCreateVector);
HRESULT WINAPI SafeArrayDestroy(SAFEARRAY* psa) QXP(SafeArrayDestroy);
HRESULT WINAPI SafeArrayLock(SAFEARRAY* psa) QXP(SafeArrayLock);
HRESULT WINAPI SafeArrayUnlock(SAFEARRAY* psa) QXP(SafeArrayUnlock);
HRESULT WINAPI SafeArrayAccessData(SAFEARRAY* psa, void** ppvData) QXP(SafeArrayAccessData);
HRESULT WINAPI SafeArrayUnaccessData(SAFEARRAY* psa) QXP(SafeArrayUnaccessData);
UINT WINAPI SafeArrayGetDim(SAFEARRAY* psa) QXP(SafeArrayGetDim);
HRESULT WINAPI SafeArrayGetLBound(SAFEARRAY* psa, UINT nDim, LONG* plLbound) QXP(SafeArrayGetLBound);
HRESULT WINAPI SafeArrayGetUBound(SAFEARRAY* psa, UINT nDim, LONG* plUbound) QXP(SafeArrayGetUBound);
HRESULT WINAPI SafeArrayGetElement(SAFEARRAY* psa, LONG* rgIndices, void* pv) QXP(SafeArrayGetElement);
HRESULT WINAPI SafeArrayPutElement(SAFEARRAY* psa, LONG* rgIndices, void* pv) QXP(SafeArrayPutElement);

EXTERN_C_END
