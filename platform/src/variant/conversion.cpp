#include "variant/conversion.h"

#include <winerror.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>
#include <limits>

#include "variant/value_type.h"

namespace qxplatform
{

namespace
{

struct IntegerBounds
{
    VARTYPE type;
    LONGLONG least;
    ULONGLONG most;
};

template <class T>
constexpr IntegerBounds BoundsOf(VARTYPE type)
{
    return {type, static_cast<LONGLONG>(std::numeric_limits<T>::min()), std::numeric_limits<T>::max()};
}

constexpr IntegerBounds kIntegerBounds[] = {
    BoundsOf<signed char>(VT_I1),
    BoundsOf<BYTE>(VT_UI1),
    BoundsOf<SHORT>(VT_I2),
    BoundsOf<USHORT>(VT_UI2),
    BoundsOf<LONG>(VT_I4),
    BoundsOf<ULONG>(VT_UI4),
    BoundsOf<INT>(VT_INT),
    BoundsOf<UINT>(VT_UINT),
    BoundsOf<LONGLONG>(VT_I8),
    BoundsOf<ULONGLONG>(VT_UI8),
};

bool SetInteger(VARIANT& target, VARTYPE type, const Number& number)
{
    const IntegerBounds* const bounds = std::find_if(std::begin(kIntegerBounds), std::end(kIntegerBounds),
        [&](const IntegerBounds& known) { return known.type == type; });
    LONGLONG value = 0;
    if (!WholeOf(number, bounds->least, bounds->most, value))
        return false;
    SetBits(target, type, value);
    return true;
}

bool SetSingle(VARIANT& target, const Number& number)
{
    const double value = DoubleOf(number);
    if (std::fabs(value) > std::numeric_limits<float>::max())
        return false;
    target.fltVal = static_cast<float>(value);
    return true;
}

bool SetValue(VARIANT& target, VARTYPE type, const Number& number, bool singlePrecision)
{
    switch (type)
    {
    case VT_R4:
        return SetSingle(target, number);
    case VT_R8:
        target.dblVal = DoubleOf(number);
        return true;
    case VT_DATE:
        target.date = DoubleOf(number);
        return IsDate(target.date);
    case VT_CY:
        return CurrencyOf(number, target.cyVal);
    case VT_DECIMAL:
        return DecimalOf(number, singlePrecision ? kSingleDigits : kDoubleDigits, target.decVal);
    case VT_BOOL:
        target.boolVal = IsZero(number) ? VARIANT_FALSE : VARIANT_TRUE;
        return true;
    default:
        return SetInteger(target, type, number);
    }
}

bool IsNumber(VARTYPE type)
{
    return IsInteger(type) || type == VT_R4 || type == VT_R8 || type == VT_DATE || type == VT_CY ||
           type == VT_DECIMAL || type == VT_BOOL;
}

} // namespace

HRESULT NumberOf(const VARIANT& value, Number& number)
{
    switch (value.vt)
    {
    case VT_EMPTY:
        number = Exact{};
        return S_OK;
    case VT_I1:
        number = ExactOf(LONGLONG{static_cast<signed char>(value.cVal)});
        return S_OK;
    case VT_UI1:
        number = ExactOf(ULONGLONG{value.bVal});
        return S_OK;
    case VT_I2:
    case VT_BOOL:
        number = ExactOf(LONGLONG{value.iVal});
        return S_OK;
    case VT_UI2:
        number = ExactOf(ULONGLONG{value.uiVal});
        return S_OK;
    case VT_I4:
    case VT_INT:
        number = ExactOf(LONGLONG{value.lVal});
        return S_OK;
    case VT_UI4:
    case VT_UINT:
        number = ExactOf(ULONGLONG{value.ulVal});
        return S_OK;
    case VT_I8:
        number = ExactOf(value.llVal);
        return S_OK;
    case VT_UI8:
        number = ExactOf(value.ullVal);
        return S_OK;
    case VT_R4:
        number = double{value.fltVal};
        return S_OK;
    case VT_R8:
    case VT_DATE:
        number = value.dblVal;
        return S_OK;
    case VT_CY:
        number = ExactOf(value.cyVal);
        return S_OK;
    case VT_DECIMAL:
    {
        Exact exact;
        if (!ExactOf(value.decVal, exact))
            return E_INVALIDARG;
        number = exact;
        return S_OK;
    }
    default:
        return DISP_E_TYPEMISMATCH;
    }
}

HRESULT SetNumber(VARIANT& target, VARTYPE type, const Number& number, bool singlePrecision)
{
    if (!IsNumber(type))
        return DISP_E_TYPEMISMATCH;
    if (!SetValue(target, type, number, singlePrecision))
        return DISP_E_OVERFLOW;
    target.vt = type;
    return S_OK;
}

void SetBits(VARIANT& target, VARTYPE type, LONGLONG bits)
{
    std::memcpy(&target.llVal, &bits, FindValueType(type)->size);
    target.vt = type;
}

bool IsDate(double date)
{
    constexpr double kBefore = -657435; // the day before 1 January 100
    constexpr double kBehind = 2958466; // 1 January 10000
    return date > kBefore && date < kBehind;
}

} // namespace qxplatform
