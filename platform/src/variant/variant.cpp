// Initialising, copying and clearing variants.
#include <oleauto.h>

#include <cstring>

#include "variant/owned_value.h"
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

void WINAPI VariantInit(VARIANTARG* pvarg)
{
    *pvarg = {};
}

HRESULT WINAPI VariantClear(VARIANTARG* pvarg)
{
    return ClearValue(*pvarg);
}

HRESULT WINAPI VariantCopy(VARIANTARG* pvargDest, const VARIANTARG* pvargSrc)
{
    if (pvargDest == pvargSrc)
        return CheckVariantType(pvargSrc->vt);
    return ReplaceValue(*pvargDest, *pvargSrc);
}

HRESULT WINAPI VariantCopyInd(VARIANT* pvarDest, const VARIANTARG* pvargSrc)
{
    if ((pvargSrc->vt & VT_BYREF) == 0)
        return VariantCopy(pvarDest, pvargSrc);
    VARIANT value{};
    if (const HRESULT result = Resolve(*pvargSrc, value); FAILED(result))
        return result;
    return ReplaceValue(*pvarDest, value);
}
