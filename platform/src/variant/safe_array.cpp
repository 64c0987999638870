// The functions of safe arrays, which store their type, bounds and lock count.
#include <oleauto.h>

#include <cstring>
#include <limits>
#include <utility>

#include "variant/array_block.h"
#include "variant/owned_value.h"

using namespace qxplatform;

namespace
{

// Returns the bound of a dimension, counted from 1 as in the API.
const SAFEARRAYBOUND* BoundOf(SAFEARRAY* array, UINT dimension)
{
    return dimension != 0 && dimension <= array->cDims ? &array->rgsabound[array->cDims - dimension] : nullptr;
}

// Returns the address of an element. The first index varies fastest.
void* PlaceOf(SAFEARRAY* array, const LONG* indices)
{
    std::size_t place = 0;
    std::size_t step = 1;
    for (USHORT i = 0; i < array->cDims; ++i)
    {
        const SAFEARRAYBOUND& bound = array->rgsabound[array->cDims - 1 - i];
        const LONGLONG distance = LONGLONG{indices[i]} - bound.lLbound;
        if (distance < 0 || distance >= LONGLONG{bound.cElements})
            return nullptr;
        place += static_cast<std::size_t>(distance) * step;
        step *= bound.cElements;
    }
    return DataAs<char>(array) + place * array->cbElements;
}

} // namespace

SAFEARRAY* WINAPI SafeArrayCreate(VARTYPE vt, UINT cDims, SAFEARRAYBOUND* rgsabound)
{
    const ValueType* const type = ElementsOfArrays(vt);
    if (type == nullptr || cDims == 0 || cDims > std::numeric_limits<USHORT>::max() || rgsabound == nullptr)
        return nullptr;
    return AllocateArray(*type, cDims, rgsabound, false);
}

SAFEARRAY* WINAPI SafeArrayCreateVector(VARTYPE vt, LONG lLbound, ULONG cElements)
{
    const ValueType* const type = ElementsOfArrays(vt);
    const SAFEARRAYBOUND bound{cElements, lLbound};
    return type != nullptr ? AllocateArray(*type, 1, &bound, true) : nullptr;
}

HRESULT WINAPI SafeArrayDestroy(SAFEARRAY* psa)
{
    return DestroyArray(psa);
}

HRESULT WINAPI SafeArrayLock(SAFEARRAY* psa)
{
    return psa != nullptr ? LockArray(psa) : E_INVALIDARG;
}

HRESULT WINAPI SafeArrayUnlock(SAFEARRAY* psa)
{
    return psa != nullptr ? UnlockArray(psa) : E_INVALIDARG;
}

HRESULT WINAPI SafeArrayAccessData(SAFEARRAY* psa, void** ppvData)
{
    if (psa == nullptr || ppvData == nullptr)
        return E_INVALIDARG;
    const HRESULT result = SafeArrayLock(psa);
    *ppvData = SUCCEEDED(result) ? psa->pvData : nullptr;
    return result;
}

HRESULT WINAPI SafeArrayUnaccessData(SAFEARRAY* psa)
{
    return SafeArrayUnlock(psa);
}

UINT WINAPI SafeArrayGetDim(SAFEARRAY* psa)
{
    return psa != nullptr ? psa->cDims : 0;
}

HRESULT WINAPI SafeArrayGetLBound(SAFEARRAY* psa, UINT nDim, LONG* plLbound)
{
    if (psa == nullptr || plLbound == nullptr)
        return E_INVALIDARG;
    const SAFEARRAYBOUND* const bound = BoundOf(psa, nDim);
    if (bound == nullptr)
        return DISP_E_BADINDEX;
    *plLbound = bound->lLbound;
    return S_OK;
}

HRESULT WINAPI SafeArrayGetUBound(SAFEARRAY* psa, UINT nDim, LONG* plUbound)
{
    if (psa == nullptr || plUbound == nullptr)
        return E_INVALIDARG;
    const SAFEARRAYBOUND* const bound = BoundOf(psa, nDim);
    if (bound == nullptr)
        return DISP_E_BADINDEX;
    *plUbound = static_cast<LONG>(LONGLONG{bound->lLbound} + bound->cElements - 1);
    return S_OK;
}

HRESULT WINAPI SafeArrayGetElement(SAFEARRAY* psa, LONG* rgIndices, void* pv)
{
    if (psa == nullptr || rgIndices == nullptr || pv == nullptr)
        return E_INVALIDARG;
    const ArrayLock lock(psa);
    if (FAILED(lock.Result()))
        return lock.Result();
    void* const place = PlaceOf(psa, rgIndices);
    if (place == nullptr)
        return DISP_E_BADINDEX;
    if (psa->fFeatures & FADF_VARIANT) // the caller's variant is cleared
        return ReplaceValue(*static_cast<VARIANT*>(pv), *static_cast<const VARIANT*>(place));
    return CopyElement(psa, place, pv);
}

HRESULT WINAPI SafeArrayPutElement(SAFEARRAY* psa, LONG* rgIndices, void* pv)
{
    if (psa == nullptr || rgIndices == nullptr)
        return E_INVALIDARG;
    const ArrayLock lock(psa);
    if (FAILED(lock.Result()))
        return lock.Result();
    void* const place = PlaceOf(psa, rgIndices);
    if (place == nullptr)
        return DISP_E_BADINDEX;

    // Strings and objects are passed directly and may be null; everything else is passed by address.
    if (psa->fFeatures & FADF_BSTR)
    {
        BSTR text = nullptr;
        const HRESULT result = CopyText(static_cast<BSTR>(pv), text);
        if (SUCCEEDED(result))
            SysFreeString(std::exchange(*static_cast<BSTR*>(place), text));
        return result;
    }
    if (psa->fFeatures & (FADF_UNKNOWN | FADF_DISPATCH))
    {
        auto* const object = static_cast<IUnknown*>(pv);
        if (object != nullptr)
            object->AddRef();
        if (IUnknown* const former = std::exchange(*static_cast<IUnknown**>(place), object))
            former->Release();
        return S_OK;
    }
    if (pv == nullptr)
        return E_INVALIDARG;
    if (psa->fFeatures & FADF_VARIANT)
        return ReplaceValue(*static_cast<VARIANT*>(place), *static_cast<const VARIANT*>(pv));
    std::memcpy(place, pv, psa->cbElements);
    return S_OK;
}
