// Initialising, copying and clearing variants.
#include <oleauto.h>

#include <cstring>

#include "variant/resolve.h"
#include "variant/value_type.h"

namespace qxplatform
{

namespace
{

HRESULT Dereference(const VARIANT& source, VARIANT& target)
{
    if (source.byref == nullptr)
        return E_INVALIDARG;
    const VARTYPE type = source.vt & static_cast<VARTYPE>(~VT_BYREF);
    if (type == VT_VARIANT)
    {
        const VARIANT& inner = *source.pvarVal;
        if (inner.vt == (VT_BYREF | VT_VARIANT))
            return E_INVALIDARG;
        if (inner.vt & VT_BYREF)
            return Dereference(inner, target);
        target = inner;
        return S_OK;
    }
    if (type & VT_ARRAY)
        target.parray = *source.pparray;
    else if (type == VT_DECIMAL)
        target.decVal = *source.pdecVal; // the type is in a member that the number doesn't use
    else
        std::memcpy(&target.llVal, source.byref, FindValueType(type)->size);
    target.vt = type;
    return S_OK;
}

} // namespace

HRESULT Resolve(const VARIANT& source, VARIANT& shared)
{
    if (const HRESULT result = CheckVariantType(source.vt); FAILED(result))
        return result;
    if (source.vt & VT_BYREF)
        return Dereference(source, shared);
    shared = source;
    return S_OK;
}

} // namespace qxplatform

using namespace qxplatform;

namespace
{

// Releases what a variant owns apart from its own bytes.
void Release(VARTYPE type, const VARIANT& value)
{
    if (type == VT_BSTR)
        SysFreeString(value.bstrVal);
    else if ((type == VT_UNKNOWN || type == VT_DISPATCH) && value.punkVal != nullptr)
        value.punkVal->Release();
}

// Replaces the resources of a bytewise copy with copies of its own.
HRESULT Duplicate(VARIANT& copy)
{
    if (copy.vt & VT_BYREF)
        return S_OK;
    if (copy.vt & VT_ARRAY)
        return SafeArrayCopy(copy.parray, &copy.parray);
    if (copy.vt == VT_BSTR)
    {
        // Null becomes an empty string.
        copy.bstrVal =
            SysAllocStringByteLen(reinterpret_cast<const char*>(copy.bstrVal), SysStringByteLen(copy.bstrVal));
        return copy.bstrVal != nullptr ? S_OK : E_OUTOFMEMORY;
    }
    if ((copy.vt == VT_UNKNOWN || copy.vt == VT_DISPATCH) && copy.punkVal != nullptr)
        copy.punkVal->AddRef();
    return S_OK;
}

// `copy` is a bytewise copy.
HRESULT Replace(VARIANT& target, VARIANT copy)
{
    if (const HRESULT result = CheckVariantType(copy.vt); FAILED(result))
        return result;
    if (const HRESULT result = Duplicate(copy); FAILED(result))
        return result;
    if (const HRESULT result = VariantClear(&target); FAILED(result))
    {
        VariantClear(&copy);
        return result;
    }
    target = copy;
    return S_OK;
}

} // namespace

void WINAPI VariantInit(VARIANTARG* pvarg)
{
    *pvarg = {};
}

HRESULT WINAPI VariantClear(VARIANTARG* pvarg)
{
    if (const HRESULT result = CheckVariantType(pvarg->vt); FAILED(result))
        return result;
    if ((pvarg->vt & VT_BYREF) == 0)
    {
        if (pvarg->vt & VT_ARRAY)
        {
            if (const HRESULT result = SafeArrayDestroy(pvarg->parray); FAILED(result))
                return result;
        }
        else
            Release(pvarg->vt, *pvarg);
    }
    pvarg->vt = VT_EMPTY;
    return S_OK;
}

HRESULT WINAPI VariantCopy(VARIANTARG* pvargDest, const VARIANTARG* pvargSrc)
{
    if (pvargDest == pvargSrc)
        return CheckVariantType(pvargSrc->vt);
    return Replace(*pvargDest, *pvargSrc);
}

HRESULT WINAPI VariantCopyInd(VARIANT* pvarDest, const VARIANTARG* pvargSrc)
{
    if ((pvargSrc->vt & VT_BYREF) == 0)
        return VariantCopy(pvarDest, pvargSrc);
    VARIANT value{};
    if (const HRESULT result = Resolve(*pvargSrc, value); FAILED(result))
        return result;
    return Replace(*pvarDest, value);
}
