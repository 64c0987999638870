#include "core/variant/variant.h"

#include "core/debug_line.h"
#include "core/developer_run.h"

#include <cstdint>
#include <utility>
#include <vector>

namespace qx
{

namespace
{

// Locks an array, so that it is neither moved nor resized.
class clsArrayLock
{
public:
    explicit clsArrayLock(SAFEARRAY* array) : _array(array), _isLocked(SUCCEEDED(SafeArrayLock(array))) {}
    clsArrayLock(const clsArrayLock&) = delete;
    clsArrayLock& operator=(const clsArrayLock&) = delete;
    ~clsArrayLock()
    {
        if (_isLocked)
            SafeArrayUnlock(_array);
    }
    explicit operator bool() const { return _isLocked; }

private:
    SAFEARRAY* _array;
    bool _isLocked;
};

bool AreInBounds(const SAFEARRAY& array, std::initializer_list<ULONG> indexes)
{
    const auto dimensions = static_cast<USHORT>(indexes.size());
    if (array.cDims != indexes.size())
    {
        if (UtilIsDeveloperRun())
            DebugLine(L"Dimension mismatch: %d %d", int{array.cDims}, int{dimensions});
        return false;
    }
    for (USHORT i = 0; i < dimensions; ++i)
    {
        const ULONG index = indexes.begin()[i];
        const ULONG count = array.rgsabound[i].cElements;
        if (index < count)
            continue;
        if (UtilIsDeveloperRun())
        {
            DebugLine(L"out of bounds (%d %d)", index, count);
            DebugLine(L"out of bounds (2) (%d %d)", index, count);
        }
        return false;
    }
    return true;
}

// Converts indexes, last dimension first, to the indexes that SafeArrayGetElement expects: first dimension first, and
// counted from the lower bounds. The array stores the bounds of its last dimension first.
std::vector<LONG> PlaceOf(const SAFEARRAY& array, std::initializer_list<ULONG> indexes)
{
    std::vector<LONG> place;
    for (std::size_t i = indexes.size(); i-- > 0;)
        place.push_back(static_cast<LONG>(array.rgsabound[i].lLbound + LONGLONG{indexes.begin()[i]}));
    return place;
}

// Reads an element of one of the supported types: texts, variants and objects.
clsVariant ReadElement(SAFEARRAY* array, LONG* place)
{
    VARIANT element{};
    void* target = nullptr;
    if (array->fFeatures & FADF_BSTR)
    {
        element.vt = VT_BSTR;
        target = &element.bstrVal;
    }
    else if (array->fFeatures & FADF_VARIANT)
        target = &element;
    else if (array->fFeatures & (FADF_DISPATCH | FADF_UNKNOWN))
    {
        element.vt = array->fFeatures & FADF_DISPATCH ? VT_DISPATCH : VT_UNKNOWN;
        target = &element.punkVal;
    }
    if (target == nullptr || FAILED(SafeArrayGetElement(array, place, target)))
        return {};
    return clsVariant::Adopt(element);
}

} // namespace

clsVariant::clsVariant(const VARIANT& value) noexcept
{
    VariantInit(&_value);
    VariantCopyInd(&_value, const_cast<VARIANT*>(&value));
}

clsVariant::clsVariant(const String& text)
{
    VariantInit(&_value);
    _value.bstrVal = SysAllocStringLen(text.Text(), static_cast<UINT>(text.Length()));
    if (_value.bstrVal != nullptr)
        _value.vt = VT_BSTR;
}

clsVariant clsVariant::Adopt(const VARIANT& value) noexcept
{
    clsVariant result;
    result._value = value;
    return result;
}

void clsVariant::Swap(clsVariant& other) noexcept
{
    std::swap(_value, other._value);
}

HRESULT clsVariant::CopyTo(VARIANT& target) const noexcept
{
    return VariantCopyInd(&target, const_cast<VARIANT*>(&_value));
}

HRESULT clsVariant::MoveTo(VARIANT& target) noexcept
{
    const HRESULT result = VariantClear(&target);
    if (SUCCEEDED(result))
        std::swap(target, _value);
    return result;
}

// Fills the array from the end, so that the memory of elements already moved can be released meanwhile.
clsVariant clsVariant::ArrayOf(std::deque<clsVariant> elements)
{
    VARIANT array{};
    array.parray = SafeArrayCreateVector(VT_VARIANT, 0, static_cast<ULONG>(elements.size()));
    if (array.parray != nullptr)
    {
        array.vt = VT_ARRAY | VT_VARIANT;
        for (auto* end = static_cast<VARIANT*>(array.parray->pvData) + elements.size(); !elements.empty();)
        {
            std::swap(*--end, elements.back()._value); // the new elements are empty
            elements.pop_back();
        }
    }
    return Adopt(array);
}

void clsVariant::SetArray(WCValSList<clsVariant> list)
{
    std::deque<clsVariant> elements;
    for (clsVariant& value : list)
        elements.push_back(std::move(value));
    *this = ArrayOf(std::move(elements));
}

String ToString(const clsVariant& value)
{
    if (value.Type() == VT_BSTR)
    {
        const BSTR text = value.Get().bstrVal;
        return String(std::wstring_view(text != nullptr ? text : L"", SysStringLen(text)));
    }
    const clsVariant copy = value;
    switch (copy.Type())
    {
    case VT_I8:
        return String(String::kFormatted, L"%I64d", copy.Get().llVal);
    case VT_UI8:
        return String(String::kFormatted, L"%I64u", copy.Get().ullVal);
    default:
    {
        VARIANT text{};
        if (FAILED(VariantChangeType(&text, const_cast<VARIANT*>(&copy.Get()), 0, VT_BSTR)))
            return String();
        return ToString(clsVariant::Adopt(text));
    }
    }
}

double ToDouble(const clsVariant& value)
{
    if (value.Type() == VT_R8)
        return value.Get().dblVal;
    VARIANT number{};
    if (FAILED(VariantChangeType(&number, const_cast<VARIANT*>(&value.Get()), 0, VT_R8)))
        return 0.0;
    return number.dblVal;
}

clsVariant GetElement(const clsVariant& array, std::initializer_list<ULONG> indexes)
{
    if ((array.Type() & VT_ARRAY) == 0 || array.Get().parray == nullptr)
        return {};
    SAFEARRAY* const elements = array.Get().parray;
    const clsArrayLock lock(elements);
    if (!lock || !AreInBounds(*elements, indexes))
        return {};
    return ReadElement(elements, PlaceOf(*elements, indexes).data());
}

} // namespace qx
