// Comparison of two variants.
#include <oleauto.h>

#include <stringapiset.h>
#include <winnls.h>

#include "variant/conversion.h"

using namespace qxplatform;

namespace
{

// Returns true for the types that the documentation permits: not newer integers, references and arrays.
constexpr bool IsCompared(VARTYPE type)
{
    switch (type)
    {
    case VT_EMPTY:
    case VT_NULL:
    case VT_I2:
    case VT_I4:
    case VT_R4:
    case VT_R8:
    case VT_CY:
    case VT_DATE:
    case VT_BSTR:
    case VT_ERROR:
    case VT_BOOL:
    case VT_DECIMAL:
    case VT_UI1:
    case VT_I8:
        return true;
    default:
        return false;
    }
}

// Determines which of the two errors applies to types that aren't compared.
constexpr bool IsKnown(VARTYPE type)
{
    return type <= VT_DECIMAL || (type >= VT_I1 && type <= VT_I8);
}

template <class T>
HRESULT OrderOf(const T& left, const T& right)
{
    return left < right ? VARCMP_LT : left == right ? VARCMP_EQ : VARCMP_GT;
}

HRESULT CompareTexts(BSTR left, BSTR right, LCID locale, ULONG flags)
{
    const auto text = [](BSTR bstr)
    {
        return bstr != nullptr ? bstr : L"";
    };
    const int order = CompareStringW(locale, flags, text(left), static_cast<int>(SysStringLen(left)), text(right),
        static_cast<int>(SysStringLen(right)));
    return order != 0 ? order - CSTR_LESS_THAN + VARCMP_LT : E_INVALIDARG;
}

bool IsFloat(VARTYPE type)
{
    return type == VT_R4 || type == VT_R8 || type == VT_DATE;
}

// Compares in the wider of the two types: decimal, floating-point, currency, integer. A single is precise only to its
// own digits, so a double compared with it is rounded to them.
HRESULT CompareNumbers(const VARIANT& left, const VARIANT& right)
{
    Number leftNumber, rightNumber;
    if (const HRESULT result = NumberOf(left, leftNumber); FAILED(result))
        return result;
    if (const HRESULT result = NumberOf(right, rightNumber); FAILED(result))
        return result;
    const bool decimal = left.vt == VT_DECIMAL || right.vt == VT_DECIMAL;
    if (!decimal && (IsFloat(left.vt) || IsFloat(right.vt)))
    {
        const double a = DoubleOf(leftNumber);
        const double b = DoubleOf(rightNumber);
        const bool single = left.vt == VT_R4 || right.vt == VT_R4;
        const bool bothFloat = IsFloat(left.vt) && IsFloat(right.vt);
        return single && bothFloat ? OrderOf(static_cast<float>(a), static_cast<float>(b)) : OrderOf(a, b);
    }
    const auto exact = [](const Number& number, const VARIANT& value, Exact& result)
    {
        const auto* const already = std::get_if<Exact>(&number);
        if (already != nullptr)
            result = *already;
        return already != nullptr ||
               ExactOf(std::get<double>(number), value.vt == VT_R4 ? kSingleDigits : kDoubleDigits, result);
    };
    Exact leftExact, rightExact;
    // One of the numbers is beyond the range of decimals.
    if (!exact(leftNumber, left, leftExact) || !exact(rightNumber, right, rightExact))
        return OrderOf(DoubleOf(leftNumber), DoubleOf(rightNumber));
    return OrderOf(Compare(leftExact, rightExact), 0);
}

} // namespace

HRESULT WINAPI VarCmp(LPVARIANT pvarLeft, LPVARIANT pvarRight, LCID lcid, ULONG dwFlags)
{
    const VARIANT& left = *pvarLeft;
    const VARIANT& right = *pvarRight;
    if (!IsKnown(left.vt) || !IsKnown(right.vt))
        return DISP_E_BADVARTYPE;
    if (!IsCompared(left.vt) || !IsCompared(right.vt))
        return DISP_E_TYPEMISMATCH;
    if (left.vt == VT_ERROR || right.vt == VT_ERROR) // errors have no order: all are equal
        return left.vt == right.vt ? VARCMP_EQ : DISP_E_TYPEMISMATCH;
    if (left.vt == VT_NULL || right.vt == VT_NULL)
        return VARCMP_NULL;
    const bool leftIsText = left.vt == VT_BSTR;
    const bool rightIsText = right.vt == VT_BSTR;
    if (!leftIsText && !rightIsText)
        return CompareNumbers(left, right);
    // VT_EMPTY counts as the empty text; any other value sorts before all texts.
    if ((leftIsText || left.vt == VT_EMPTY) && (rightIsText || right.vt == VT_EMPTY))
        return CompareTexts(leftIsText ? left.bstrVal : nullptr, rightIsText ? right.bstrVal : nullptr, lcid, dwFlags);
    return leftIsText ? VARCMP_GT : VARCMP_LT;
}
