#include "variant/owned_value.h"

#include <oleauto.h>

#include <cstring>

#include "variant/array_block.h"

namespace qxplatform
{

namespace
{

// Limits the recursion so that it fits in a stack of 64 KB.
constexpr int kMaxCopyDepth = 256;

// Releases what a value other than an array owns.
void ReleaseSimple(const VARIANT& value)
{
    if (value.vt == VT_BSTR)
        SysFreeString(value.bstrVal);
    else if ((value.vt == VT_UNKNOWN || value.vt == VT_DISPATCH) && value.punkVal != nullptr)
        value.punkVal->Release();
}

void ReleaseSimpleElements(SAFEARRAY* array)
{
    const std::size_t count = CountElements(array);
    if (array->fFeatures & FADF_BSTR)
        for (std::size_t i = 0; i < count; ++i)
            SysFreeString(DataAs<BSTR>(array)[i]);
    else if (array->fFeatures & (FADF_UNKNOWN | FADF_DISPATCH))
        for (std::size_t i = 0; i < count; ++i)
            if (IUnknown* const object = DataAs<IUnknown*>(array)[i])
                object->Release();
}

bool HasVariants(const SAFEARRAY* array)
{
    return (array->fFeatures & FADF_VARIANT) != 0 && array->pvData != nullptr;
}

// Returns the array that a variant owns, if it can be destroyed.
SAFEARRAY* ArrayToDestroy(const VARIANT& value)
{
    const bool owns = (value.vt & VT_ARRAY) != 0 && (value.vt & VT_BYREF) == 0 && SUCCEEDED(CheckVariantType(value.vt));
    return owns && value.parray != nullptr && value.parray->cLocks == 0 ? value.parray : nullptr;
}

// Destroys an array of variants without recursion. While an inner array is destroyed, the unused half of the variant
// that owns it stores a pointer to the variant that owns the outer array. The way back therefore needs neither memory
// nor stack.
void DestroyTree(SAFEARRAY* root)
{
    VARIANT* owner = nullptr; // of `array`; null for the root
    SAFEARRAY* array = root;
    for (std::size_t i = 0;;)
    {
        if (i == CountElements(array))
        {
            FreeArray(array);
            if (owner == nullptr)
                return;
            VARIANT* const done = owner;
            owner = static_cast<VARIANT*>(static_cast<void*>(done->pRecInfo));
            done->vt = VT_EMPTY;
            array = owner != nullptr ? owner->parray : root;
            i = static_cast<std::size_t>(done - DataAs<VARIANT>(array)) + 1;
            continue;
        }
        VARIANT& element = DataAs<VARIANT>(array)[i++];
        SAFEARRAY* const inner = ArrayToDestroy(element);
        if (inner == nullptr)
            ReleaseSimple(element);
        else if (HasVariants(inner))
        {
            element.pRecInfo = static_cast<IRecordInfo*>(static_cast<void*>(owner));
            owner = &element;
            array = inner;
            i = 0;
            continue;
        }
        else
        {
            if (inner->pvData != nullptr)
                ReleaseSimpleElements(inner);
            FreeArray(inner);
        }
        if (inner != nullptr || (element.vt & VT_ARRAY) == 0)
            element.vt = VT_EMPTY;
    }
}

HRESULT CopyArrayAt(int depth, SAFEARRAY* array, SAFEARRAY*& copy);

HRESULT DuplicateAt(int depth, VARIANT& copy)
{
    if (copy.vt & VT_BYREF)
        return S_OK;
    if (copy.vt & VT_ARRAY)
        return CopyArrayAt(depth, copy.parray, copy.parray);
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

HRESULT CopyElementAt(int depth, const SAFEARRAY* array, const void* source, void* target)
{
    if (array->fFeatures & FADF_BSTR)
        return CopyText(*static_cast<const BSTR*>(source), *static_cast<BSTR*>(target));
    if (array->fFeatures & FADF_VARIANT)
    {
        auto& copy = *static_cast<VARIANT*>(target);
        copy = *static_cast<const VARIANT*>(source);
        HRESULT result = CheckVariantType(copy.vt);
        if (SUCCEEDED(result))
            result = DuplicateAt(depth, copy);
        if (FAILED(result))
            copy.vt = VT_EMPTY;
        return result;
    }
    std::memcpy(target, source, array->cbElements);
    if (array->fFeatures & (FADF_UNKNOWN | FADF_DISPATCH))
        if (IUnknown* const object = *static_cast<IUnknown**>(target))
            object->AddRef();
    return S_OK;
}

HRESULT CopyArrayAt(int depth, SAFEARRAY* array, SAFEARRAY*& copy)
{
    copy = nullptr;
    if (array == nullptr)
        return S_OK;
    if (depth == kMaxCopyDepth)
        return E_OUTOFMEMORY;
    const ValueType* const type = ElementsOfArrays(ElementType(array));
    if (array->cDims == 0 || type == nullptr || type->size != array->cbElements)
        return E_INVALIDARG;
    const ArrayLock lock(array);
    if (FAILED(lock.Result()))
        return lock.Result();
    SAFEARRAY* const made = AllocateArray(*type, array->cDims, array->rgsabound, WasMadeAsVector(array));
    if (made == nullptr)
        return E_OUTOFMEMORY;
    std::memcpy(made->rgsabound, array->rgsabound, array->cDims * sizeof(SAFEARRAYBOUND)); // they had been reversed
    const std::size_t count = CountElements(array);
    for (std::size_t i = 0; i < count; ++i)
        if (const HRESULT result = CopyElementAt(depth + 1, array, DataAs<char>(array) + i * array->cbElements,
                DataAs<char>(made) + i * array->cbElements);
            FAILED(result))
        {
            DestroyArray(made);
            return result;
        }
    copy = made;
    return S_OK;
}

} // namespace

HRESULT ClearValue(VARIANT& value)
{
    if (const HRESULT result = CheckVariantType(value.vt); FAILED(result))
        return result;
    if ((value.vt & VT_BYREF) == 0)
    {
        if ((value.vt & VT_ARRAY) == 0)
            ReleaseSimple(value);
        else if (const HRESULT result = DestroyArray(value.parray); FAILED(result))
            return result;
    }
    value.vt = VT_EMPTY;
    return S_OK;
}

HRESULT DuplicateValue(VARIANT& copy)
{
    return DuplicateAt(0, copy);
}

HRESULT ReplaceValue(VARIANT& target, const VARIANT& source)
{
    VARIANT copy = source;
    if (const HRESULT result = CheckVariantType(copy.vt); FAILED(result))
        return result;
    if (const HRESULT result = DuplicateValue(copy); FAILED(result))
        return result;
    if (const HRESULT result = ClearValue(target); FAILED(result))
    {
        ClearValue(copy);
        return result;
    }
    target = copy;
    return S_OK;
}

HRESULT DestroyArray(SAFEARRAY* array)
{
    if (array == nullptr)
        return S_OK;
    if (array->cLocks != 0)
        return DISP_E_ARRAYISLOCKED;
    if (HasVariants(array))
    {
        DestroyTree(array);
        return S_OK;
    }
    if (array->pvData != nullptr)
        ReleaseSimpleElements(array);
    FreeArray(array);
    return S_OK;
}

HRESULT CopyText(BSTR source, BSTR& target)
{
    target = nullptr;
    if (source == nullptr)
        return S_OK;
    target = SysAllocStringByteLen(reinterpret_cast<const char*>(source), SysStringByteLen(source));
    return target != nullptr ? S_OK : E_OUTOFMEMORY;
}

HRESULT CopyElement(const SAFEARRAY* array, const void* source, void* target)
{
    return CopyElementAt(0, array, source, target);
}

} // namespace qxplatform
