// Shorthands for variants, and their values as text for use in tables.
#pragma once

#include "support/readable_text.h"

#include <windows.h>

#include <oleauto.h>

#include <charconv>

namespace qxtest
{

// A variant that clears itself.
class Value : public VARIANT
{
public:
    Value() : VARIANT{} {}
    explicit Value(VARTYPE type, LONGLONG bits = 0) : VARIANT{}
    {
        vt = type;
        llVal = bits;
    }
    Value(const Value& other) : VARIANT{} { VariantCopy(this, const_cast<Value*>(&other)); }
    Value& operator=(const Value& other)
    {
        VariantCopy(this, const_cast<Value*>(&other));
        return *this;
    }
    ~Value() { VariantClear(this); }
};

inline Value I4(LONG value)
{
    return Value(VT_I4, value);
}

inline Value R4(float value)
{
    Value result(VT_R4);
    result.fltVal = value;
    return result;
}

inline Value R8(double value, VARTYPE type = VT_R8)
{
    Value result(type);
    result.dblVal = value;
    return result;
}

inline Value Date(double value)
{
    return R8(value, VT_DATE);
}

inline Value Text(const wchar_t* text)
{
    Value result(VT_BSTR);
    result.bstrVal = SysAllocString(text);
    return result;
}

// Returns mantissa / 10^scale; the words of the mantissa are given from highest to lowest.
inline Value Decimal(bool negative, ULONG high, ULONG middle, ULONG low, BYTE scale)
{
    Value result;
    result.decVal.Hi32 = high;
    result.decVal.Mid32 = middle;
    result.decVal.Lo32 = low;
    result.decVal.scale = scale;
    result.decVal.sign = negative ? 0x80 : 0;
    result.vt = VT_DECIMAL;
    return result;
}

inline Value SmallDecimal(int value, BYTE scale = 0)
{
    return Decimal(value < 0, 0, 0, static_cast<ULONG>(value < 0 ? -value : value), scale);
}

template <class Number>
std::string DigitsOf(Number value)
{
    char text[40];
    return {text, std::to_chars(text, text + sizeof text, value).ptr};
}

// Returns the value without its type: texts in quotes, decimals as their words and scale.
inline std::string Readable(const VARIANT& value)
{
    switch (value.vt)
    {
    case VT_EMPTY:
        return "empty";
    case VT_NULL:
        return "null";
    case VT_I1:
        return std::to_string(static_cast<signed char>(value.cVal));
    case VT_UI1:
        return std::to_string(value.bVal);
    case VT_I2:
    case VT_BOOL:
        return std::to_string(value.iVal);
    case VT_UI2:
        return std::to_string(value.uiVal);
    case VT_I4:
    case VT_INT:
    case VT_ERROR:
        return std::to_string(value.lVal);
    case VT_UI4:
    case VT_UINT:
        return std::to_string(value.ulVal);
    case VT_I8:
    case VT_CY:
        return std::to_string(value.llVal);
    case VT_UI8:
        return std::to_string(value.ullVal);
    case VT_R4:
        return DigitsOf(value.fltVal);
    case VT_R8:
    case VT_DATE:
        return DigitsOf(value.dblVal);
    case VT_BSTR:
        return '"' + ReadableText({value.bstrVal != nullptr ? value.bstrVal : L"", SysStringLen(value.bstrVal)}) + '"';
    case VT_DECIMAL:
    {
        const DECIMAL& number = value.decVal;
        char text[60];
        std::snprintf(text, sizeof text, number.Hi32 != 0 || number.Mid32 != 0 ? "%s%x:%x:%x/%d" : "%s%.0d%.0d%d/%d",
            number.sign != 0 ? "-" : "", static_cast<unsigned>(number.Hi32), static_cast<unsigned>(number.Mid32),
            static_cast<unsigned>(number.Lo32), number.scale);
        return text;
    }
    default:
        return "type " + std::to_string(value.vt);
    }
}

inline std::string ReadableResult(HRESULT result)
{
    for (const auto& [code, text] : {std::pair(DISP_E_TYPEMISMATCH, "mismatch"), {DISP_E_OVERFLOW, "overflow"},
             {DISP_E_BADVARTYPE, "bad type"}, {E_INVALIDARG, "invalid"}})
        if (result == code)
            return text;
    return std::to_string(result);
}

} // namespace qxtest
