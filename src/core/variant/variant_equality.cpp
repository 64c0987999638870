// Equality of variants.
#include "core/variant/variant.h"

#include "core/debug_line.h"
#include "core/developer_run.h"
#include "core/system_values.h"

#include <cstring>

namespace qx
{

namespace
{

enum class TypeClass
{
    Number,
    Text,
    Other
};

constexpr TypeClass ClassOf(VARTYPE type)
{
    switch (type & VT_TYPEMASK)
    {
    case VT_I2:
    case VT_I4:
    case VT_R4:
    case VT_R8:
    case VT_CY:
    case VT_DECIMAL:
    case VT_I1:
    case VT_UI1:
    case VT_UI2:
    case VT_UI4:
    case VT_I8:
    case VT_UI8:
    case VT_INT:
    case VT_UINT:
    case VT_INT_PTR:
    case VT_UINT_PTR:
        return TypeClass::Number;
    case VT_BSTR:
    case VT_LPSTR:
    case VT_LPWSTR:
        return TypeClass::Text;
    default:
        return TypeClass::Other;
    }
}

constexpr bool IsNothing(VARTYPE type)
{
    return (type & VT_TYPEMASK) < VT_I2;
}

bool AreEqualTexts(std::wstring_view a, std::wstring_view b)
{
    return CompareStringW(InterfaceLanguage(), SORT_STRINGSORT, a.data(), static_cast<int>(a.size()), b.data(),
               static_cast<int>(b.size())) == CSTR_EQUAL;
}

std::wstring_view ViewOf(BSTR text)
{
    return {text != nullptr ? text : L"", SysStringLen(text)};
}

double DoubleOf(CY value)
{
    double number = 0;
    VarR8FromCy(value, &number);
    return number;
}

double DoubleOf(const DECIMAL& value)
{
    double number = 0;
    VarR8FromDec(const_cast<DECIMAL*>(&value), &number);
    return number;
}

bool HaveSameBytes(const VARIANT& a, const VARIANT& b)
{
    return std::memcmp(&a, &b, sizeof a) == 0;
}

bool AreEqualOfOneType(const VARIANT& a, const VARIANT& b)
{
    switch (a.vt)
    {
    case VT_EMPTY:
    case VT_NULL:
        return true;
    case VT_I2:
    case VT_BOOL:
    case VT_UI2:
        return a.uiVal == b.uiVal;
    case VT_I4:
    case VT_ERROR:
    case VT_UI4:
    case VT_INT:
    case VT_UINT:
        return a.ulVal == b.ulVal;
    case VT_I1:
    case VT_UI1:
        return a.bVal == b.bVal;
    case VT_I8:
    case VT_UI8:
    case VT_INT_PTR:
    case VT_UINT_PTR:
        return a.ullVal == b.ullVal;
    case VT_R4:
        return a.fltVal == b.fltVal;
    case VT_R8:
    case VT_DATE:
        return a.dblVal == b.dblVal;
    case VT_CY:
        return DoubleOf(a.cyVal) == DoubleOf(b.cyVal);
    case VT_DECIMAL:
        return DoubleOf(a.decVal) == DoubleOf(b.decVal);
    case VT_BSTR:
        return AreEqualTexts(ViewOf(a.bstrVal), ViewOf(b.bstrVal));
    default:
        if (UtilIsDeveloperRun())
            DebugLine(L"WRN: clsVariant: don't know how to compare data type 0x%x", int{a.vt});
        return HaveSameBytes(a, b);
    }
}

bool AreEqualForTheSystem(const VARIANT& a, const VARIANT& b)
{
    switch (VarCmp(const_cast<VARIANT*>(&a), const_cast<VARIANT*>(&b), InterfaceLanguage(), 0))
    {
    case VARCMP_EQ:
        return true;
    case VARCMP_LT:
    case VARCMP_GT:
        return false;
    default:
        if (UtilIsDeveloperRun())
            DebugLine(L"WRN: clsVariant: don't know how to compare data types 0x%x and 0x%x", int{a.vt}, int{b.vt});
        return false;
    }
}

} // namespace

bool operator==(const clsVariant& a, const clsVariant& b)
{
    if (a.Type() == b.Type())
        return AreEqualOfOneType(a.Get(), b.Get());
    if (IsNothing(a.Type()) || IsNothing(b.Type()))
        return false;
    const TypeClass common = ClassOf(a.Type()) == ClassOf(b.Type()) ? ClassOf(a.Type()) : TypeClass::Other;
    switch (common)
    {
    case TypeClass::Number:
        return ToDouble(a) == ToDouble(b);
    case TypeClass::Text:
        return AreEqualTexts(ToString(a).View(), ToString(b).View());
    default:
        return AreEqualForTheSystem(a.Get(), b.Get());
    }
}

} // namespace qx
