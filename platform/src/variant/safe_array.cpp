// Safe arrays, which store their type, bounds and lock count.
#include <oleauto.h>

#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

#include "variant/value_type.h"

using namespace qxplatform;

namespace
{

constexpr USHORT kMadeAsVector = 0x2000;
constexpr USHORT kNotOnTheHeap = FADF_AUTO | FADF_STATIC | FADF_EMBEDDED;

// Before the array: an interface identifier, or the element type in the last four bytes.
constexpr std::size_t kHeaderSize = sizeof(GUID);

char* HeaderEnd(SAFEARRAY* array)
{
    return reinterpret_cast<char*>(array);
}

VARTYPE ElementType(SAFEARRAY* array)
{
    if (array->fFeatures & FADF_HAVEVARTYPE)
    {
        DWORD type;
        std::memcpy(&type, HeaderEnd(array) - sizeof type, sizeof type);
        return static_cast<VARTYPE>(type);
    }
    if (array->fFeatures & FADF_DISPATCH)
        return VT_DISPATCH;
    return array->fFeatures & FADF_UNKNOWN ? VT_UNKNOWN : VT_EMPTY;
}

void WriteHeader(SAFEARRAY* array, VARTYPE type)
{
    if (array->fFeatures & FADF_HAVEVARTYPE)
    {
        const DWORD wide = type;
        std::memcpy(HeaderEnd(array) - sizeof wide, &wide, sizeof wide);
        return;
    }
    const IID& id = type == VT_DISPATCH ? IID_IDispatch : IID_IUnknown;
    std::memcpy(HeaderEnd(array) - kHeaderSize, &id, sizeof id);
}

std::size_t CountElements(const SAFEARRAY* array)
{
    std::size_t count = 1;
    for (USHORT i = 0; i < array->cDims; ++i)
        count *= array->rgsabound[i].cElements;
    return count;
}

// Returns true if the number of elements and their size fit in 32 bits.
bool FitsIn32Bits(const SAFEARRAYBOUND* bounds, UINT dimensions, std::size_t elementSize)
{
    std::size_t size = elementSize;
    for (UINT i = 0; i < dimensions; ++i)
    {
        size *= bounds[i].cElements;
        if (size > std::numeric_limits<ULONG>::max())
            return false;
    }
    return true;
}

// `bounds` are in the caller's order, which is the reverse of the array's.
SAFEARRAY* Create(const ValueType& type, UINT dimensions, const SAFEARRAYBOUND* bounds, USHORT moreFeatures)
{
    if (!FitsIn32Bits(bounds, dimensions, type.size))
        return nullptr;
    const std::size_t size = kHeaderSize + sizeof(SAFEARRAY) + (dimensions - 1) * sizeof(SAFEARRAYBOUND);
    char* const block = static_cast<char*>(std::calloc(1, size));
    if (block == nullptr)
        return nullptr;
    auto* const array = reinterpret_cast<SAFEARRAY*>(block + kHeaderSize);
    array->cDims = static_cast<USHORT>(dimensions);
    array->fFeatures = type.features | moreFeatures;
    array->cbElements = type.size;
    for (UINT i = 0; i < dimensions; ++i)
        array->rgsabound[i] = bounds[dimensions - 1 - i];
    WriteHeader(array, type.type);
    // An array without elements still allocates memory, for callers that treat null as a failure.
    const std::size_t dataSize = CountElements(array) * type.size;
    array->pvData = std::calloc(1, dataSize != 0 ? dataSize : 1);
    if (array->pvData == nullptr)
    {
        std::free(block);
        return nullptr;
    }
    return array;
}

const ValueType* ElementsOfArrays(VARTYPE type)
{
    const ValueType* const known = FindValueType(type);
    return known != nullptr && known->features != 0 ? known : nullptr;
}

template <class Element>
Element* DataAs(SAFEARRAY* array)
{
    return static_cast<Element*>(array->pvData);
}

void ReleaseElements(SAFEARRAY* array)
{
    const std::size_t count = CountElements(array);
    if (array->fFeatures & FADF_BSTR)
        for (std::size_t i = 0; i < count; ++i)
            SysFreeString(DataAs<BSTR>(array)[i]);
    else if (array->fFeatures & FADF_VARIANT)
        for (std::size_t i = 0; i < count; ++i)
            VariantClear(&DataAs<VARIANT>(array)[i]);
    else if (array->fFeatures & (FADF_UNKNOWN | FADF_DISPATCH))
        for (std::size_t i = 0; i < count; ++i)
            if (IUnknown* const object = DataAs<IUnknown*>(array)[i])
                object->Release();
}

HRESULT CopyText(BSTR source, BSTR& target)
{
    target = nullptr;
    if (source == nullptr)
        return S_OK;
    target = SysAllocStringByteLen(reinterpret_cast<const char*>(source), SysStringByteLen(source));
    return target != nullptr ? S_OK : E_OUTOFMEMORY;
}

// Copies to a place that contains nothing to release.
HRESULT CopyElement(SAFEARRAY* array, const void* source, void* target)
{
    if (array->fFeatures & FADF_BSTR)
        return CopyText(*static_cast<const BSTR*>(source), *static_cast<BSTR*>(target));
    if (array->fFeatures & FADF_VARIANT)
    {
        auto* const variant = static_cast<VARIANT*>(target);
        VariantInit(variant);
        return VariantCopy(variant, static_cast<const VARIANT*>(source));
    }
    std::memcpy(target, source, array->cbElements);
    if (array->fFeatures & (FADF_UNKNOWN | FADF_DISPATCH))
        if (IUnknown* const object = *static_cast<IUnknown**>(target))
            object->AddRef();
    return S_OK;
}

HRESULT CopyElements(SAFEARRAY* source, SAFEARRAY* target)
{
    const std::size_t count = CountElements(source);
    const ULONG size = source->cbElements;
    for (std::size_t i = 0; i < count; ++i)
        if (const HRESULT result =
                CopyElement(source, DataAs<char>(source) + i * size, DataAs<char>(target) + i * size);
            FAILED(result))
            return result;
    return S_OK;
}

// Returns the bound of a dimension, counted from 1 as in the API.
const SAFEARRAYBOUND* BoundOf(SAFEARRAY* array, UINT dimension)
{
    return dimension != 0 && dimension <= array->cDims ? &array->rgsabound[array->cDims - dimension] : nullptr;
}

// The first index varies fastest.
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

// Locks an array for the duration of one call.
class Lock
{
public:
    explicit Lock(SAFEARRAY* array) : _array(array), _result(SafeArrayLock(array)) {}
    ~Lock()
    {
        if (SUCCEEDED(_result))
            SafeArrayUnlock(_array);
    }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;
    HRESULT Result() const { return _result; }

private:
    SAFEARRAY* _array;
    HRESULT _result;
};

} // namespace

SAFEARRAY* WINAPI SafeArrayCreate(VARTYPE vt, UINT cDims, SAFEARRAYBOUND* rgsabound)
{
    const ValueType* const type = ElementsOfArrays(vt);
    if (type == nullptr || cDims == 0 || cDims > std::numeric_limits<USHORT>::max() || rgsabound == nullptr)
        return nullptr;
    return Create(*type, cDims, rgsabound, 0);
}

SAFEARRAY* WINAPI SafeArrayCreateVector(VARTYPE vt, LONG lLbound, ULONG cElements)
{
    const ValueType* const type = ElementsOfArrays(vt);
    const SAFEARRAYBOUND bound{cElements, lLbound};
    return type != nullptr ? Create(*type, 1, &bound, kMadeAsVector) : nullptr;
}

HRESULT WINAPI SafeArrayDestroy(SAFEARRAY* psa)
{
    if (psa == nullptr)
        return S_OK;
    if (psa->cLocks != 0)
        return DISP_E_ARRAYISLOCKED;
    if (psa->pvData != nullptr)
        ReleaseElements(psa);
    // Memory provided by the caller is freed by the caller; only its elements are released here.
    if (psa->fFeatures & kNotOnTheHeap)
        return S_OK;
    std::free(psa->pvData);
    std::free(HeaderEnd(psa) - kHeaderSize);
    return S_OK;
}

HRESULT WINAPI SafeArrayCopy(SAFEARRAY* psa, SAFEARRAY** ppsaOut)
{
    if (ppsaOut == nullptr)
        return E_INVALIDARG;
    *ppsaOut = nullptr;
    if (psa == nullptr)
        return S_OK;
    const ValueType* const type = ElementsOfArrays(ElementType(psa));
    if (psa->cDims == 0 || type == nullptr || type->size != psa->cbElements)
        return E_INVALIDARG;
    const Lock lock(psa);
    if (FAILED(lock.Result()))
        return lock.Result();

    SAFEARRAY* const copy = Create(*type, psa->cDims, psa->rgsabound, psa->fFeatures & kMadeAsVector);
    if (copy == nullptr)
        return E_OUTOFMEMORY;
    std::memcpy(copy->rgsabound, psa->rgsabound, psa->cDims * sizeof(SAFEARRAYBOUND)); // Create reversed them
    if (const HRESULT result = CopyElements(psa, copy); FAILED(result))
    {
        SafeArrayDestroy(copy);
        return result;
    }
    *ppsaOut = copy;
    return S_OK;
}

HRESULT WINAPI SafeArrayLock(SAFEARRAY* psa)
{
    if (psa == nullptr)
        return E_INVALIDARG;
    constexpr ULONG kMostLocks = 0xffff;
    ULONG locks = __atomic_load_n(&psa->cLocks, __ATOMIC_RELAXED);
    do
    {
        if (locks >= kMostLocks)
            return E_UNEXPECTED;
    } while (!__atomic_compare_exchange_n(&psa->cLocks, &locks, locks + 1, false, __ATOMIC_ACQUIRE, __ATOMIC_RELAXED));
    return S_OK;
}

HRESULT WINAPI SafeArrayUnlock(SAFEARRAY* psa)
{
    if (psa == nullptr)
        return E_INVALIDARG;
    ULONG locks = __atomic_load_n(&psa->cLocks, __ATOMIC_RELAXED);
    do
    {
        if (locks == 0)
            return E_UNEXPECTED;
    } while (!__atomic_compare_exchange_n(&psa->cLocks, &locks, locks - 1, false, __ATOMIC_RELEASE, __ATOMIC_RELAXED));
    return S_OK;
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
    const Lock lock(psa);
    if (FAILED(lock.Result()))
        return lock.Result();
    void* const place = PlaceOf(psa, rgIndices);
    if (place == nullptr)
        return DISP_E_BADINDEX;
    if (psa->fFeatures & FADF_VARIANT) // the caller's variant is cleared
        return VariantCopy(static_cast<VARIANT*>(pv), static_cast<const VARIANT*>(place));
    return CopyElement(psa, place, pv);
}

HRESULT WINAPI SafeArrayPutElement(SAFEARRAY* psa, LONG* rgIndices, void* pv)
{
    if (psa == nullptr || rgIndices == nullptr)
        return E_INVALIDARG;
    const Lock lock(psa);
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
        return VariantCopy(static_cast<VARIANT*>(place), static_cast<const VARIANT*>(pv));
    std::memcpy(place, pv, psa->cbElements);
    return S_OK;
}
