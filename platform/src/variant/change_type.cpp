// Conversion of a variant's type.
#include <oleauto.h>

#include <winnt.h>

#include <charconv>
#include <cstring>
#include <new>
#include <string>
#include <string_view>

#include "text/locale.h"
#include "text/locale_data.h"
#include "variant/conversion.h"
#include "variant/number_reader.h"
#include "variant/resolve.h"
#include "variant/value_type.h"

using namespace qxplatform;

namespace
{

struct Change
{
    const Locale& locale;
    VARTYPE type;
};

// ---- To text

HRESULT SetText(VARIANT& target, std::u16string_view text)
{
    target.bstrVal = SysAllocStringLen(reinterpret_cast<const wchar_t*>(text.data()), static_cast<UINT>(text.size()));
    target.vt = VT_BSTR;
    return target.bstrVal != nullptr ? S_OK : E_OUTOFMEMORY;
}

std::u16string Localized(const std::string& number, const Locale& locale)
{
    std::u16string text(number.begin(), number.end());
    const std::size_t point = text.find(u'.');
    if (point != text.npos)
        text.replace(point, 1, DecimalSeparator(locale));
    return text;
}

HRESULT ToText(VARIANT& target, const VARIANT& source, const Change& change)
{
    if (source.vt == VT_EMPTY)
        return SetText(target, u"");
    if (source.vt == VT_DATE)
    {
        const HRESULT result = VarBstrFromDate(source.date, change.locale.lcid, 0, &target.bstrVal);
        if (SUCCEEDED(result))
            target.vt = VT_BSTR;
        return result;
    }
    Number number;
    if (const HRESULT result = NumberOf(source, number); FAILED(result))
        return result;
    const auto* const exact = std::get_if<Exact>(&number);
    return SetText(target, Localized(exact != nullptr ? TextOf(*exact)
                                                      : TextOf(std::get<double>(number),
                                                            source.vt == VT_R4 ? kSingleDigits : kDoubleDigits),
                               change.locale));
}

// ---- From text

std::u16string_view TextOf(BSTR text)
{
    // Like all functions that parse the text, stop at the first zero character.
    const std::u16string_view whole(reinterpret_cast<const char16_t*>(text), SysStringLen(text));
    return whole.substr(0, whole.find(u'\0'));
}

bool EqualWithoutCase(std::u16string_view text, std::u16string_view lowerCase)
{
    return std::equal(text.begin(), text.end(), lowerCase.begin(), lowerCase.end(),
        [](char16_t a, char16_t b) { return (a >= u'A' && a <= u'Z' ? a + (u'a' - u'A') : a) == b; });
}

// Recognises the words for true and false, including their Basic forms.
bool BoolOfWord(std::u16string_view text, VARIANT& target)
{
    const bool isTrue = EqualWithoutCase(text, u"true") || text == u"#TRUE#";
    if (!isTrue && !EqualWithoutCase(text, u"false") && text != u"#FALSE#")
        return false;
    target.vt = VT_BOOL;
    target.boolVal = isTrue ? VARIANT_TRUE : VARIANT_FALSE;
    return true;
}

// Converts to the nearest number, which is 0 for the smallest ones. Returns false if the number is too large.
bool DoubleOfDigits(const ReadNumber& text, double& value)
{
    value = 0;
    if (text.digits.empty())
        return true;
    const std::string whole = text.digits + 'e' + std::to_string(text.exponent);
    const auto end = std::from_chars(whole.data(), whole.data() + whole.size(), value);
    if (end.ec == std::errc::result_out_of_range)
    {
        value = 0;
        return static_cast<long long>(text.digits.size()) + text.exponent <= 0;
    }
    if (text.negative)
        value = -value;
    return true;
}

// Stores a hexadecimal number, which is negative if it sets the highest bit of a signed type.
HRESULT SetTextBits(VARIANT& target, VARTYPE type, ULONGLONG bits)
{
    const unsigned size = IsSignedInteger(type) ? FindValueType(type)->size : 0;
    if (size != 0 && (size == sizeof bits || bits >> (size * 8) == 0))
    {
        SetBits(target, type, static_cast<LONGLONG>(bits));
        return S_OK;
    }
    return SetNumber(target, type, ExactOf(bits), false);
}

HRESULT FromText(VARIANT& target, const VARIANT& source, const Change& change)
{
    if (change.type == VT_DATE)
    {
        const OLECHAR* const text = source.bstrVal != nullptr ? source.bstrVal : L"";
        const HRESULT result = VarDateFromStr(text, change.locale.lcid, 0, &target.date);
        if (SUCCEEDED(result))
            target.vt = VT_DATE;
        return result;
    }
    const std::u16string_view text = TextOf(source.bstrVal);
    if (change.type == VT_BOOL && BoolOfWord(text, target))
        return S_OK;
    ReadNumber number;
    if (const HRESULT result = ReadNumberText(text, SymbolsOf(change.locale), number); FAILED(result))
        return result;
    if (number.isBits)
        return SetTextBits(target, change.type, number.bits);

    // Exact values must not be converted through floating point, nor very small numbers through an exact value.
    if (change.type == VT_R4 || change.type == VT_R8 || change.type == VT_BOOL)
    {
        double value;
        if (!DoubleOfDigits(number, value))
            return DISP_E_OVERFLOW;
        return SetNumber(target, change.type, value, false);
    }
    Exact exact;
    if (!ExactOf(number.digits, number.exponent, number.negative, exact))
        return DISP_E_OVERFLOW;
    return SetNumber(target, change.type, exact, false);
}

// ---- From number to number

HRESULT FromNumber(VARIANT& target, const VARIANT& source, const Change& change)
{
    Number number;
    if (const HRESULT result = NumberOf(source, number); FAILED(result))
        return result;
    const bool isInteger = IsInteger(change.type);
    // Integers of the same size have the same bits, signed or not; true sets all bits of any type.
    if (isInteger && IsInteger(source.vt) && FindValueType(source.vt)->size == FindValueType(change.type)->size)
        SetBits(target, change.type, source.llVal);
    else if (isInteger && source.vt == VT_BOOL)
        SetBits(target, change.type, source.boolVal);
    else
        return SetNumber(target, change.type, number, source.vt == VT_R4);
    return S_OK;
}

// ---- Everything else

HRESULT ToInterface(VARIANT& target, const VARIANT& source, const Change& change)
{
    if (source.vt != VT_UNKNOWN && source.vt != VT_DISPATCH)
        return DISP_E_TYPEMISMATCH;
    if (source.punkVal != nullptr)
    {
        void* object = nullptr;
        const IID& id = change.type == VT_DISPATCH ? IID_IDispatch : IID_IUnknown;
        if (FAILED(source.punkVal->QueryInterface(id, &object)))
            return DISP_E_TYPEMISMATCH;
        target.punkVal = static_cast<IUnknown*>(object);
    }
    target.vt = change.type;
    return S_OK;
}

constexpr VARTYPE kBytes = VT_ARRAY | VT_UI1;

// Copies the bytes of an array to a text. TextToBytes does the opposite.
HRESULT BytesToText(VARIANT& target, SAFEARRAY* bytes)
{
    if (SafeArrayGetDim(bytes) != 1)
        return DISP_E_TYPEMISMATCH;
    target.bstrVal = SysAllocStringByteLen(static_cast<const char*>(bytes->pvData), bytes->rgsabound[0].cElements);
    target.vt = VT_BSTR;
    return target.bstrVal != nullptr ? S_OK : E_OUTOFMEMORY;
}

HRESULT TextToBytes(VARIANT& target, BSTR text)
{
    const UINT size = SysStringByteLen(text);
    SAFEARRAYBOUND bound{size, 0};
    target.parray = SafeArrayCreate(VT_UI1, 1, &bound);
    if (target.parray == nullptr)
        return E_OUTOFMEMORY;
    if (size != 0)
        std::memcpy(target.parray->pvData, text, size);
    target.vt = kBytes;
    return S_OK;
}

HRESULT ChangeArray(VARIANT& target, const VARIANT& source, const Change& change)
{
    if (source.vt == kBytes && change.type == VT_BSTR)
        return BytesToText(target, source.parray);
    if (source.vt == VT_BSTR && change.type == kBytes)
        return TextToBytes(target, source.bstrVal);
    return DISP_E_TYPEMISMATCH;
}

HRESULT ChangeValue(VARIANT& target, const VARIANT& source, const Change& change)
{
    if (source.vt == change.type)
        return VariantCopy(&target, &source);
    if (change.type & VT_BYREF || source.vt == VT_ERROR)
        return DISP_E_TYPEMISMATCH;
    if ((source.vt | change.type) & VT_ARRAY)
        return ChangeArray(target, source, change);
    if (change.type == VT_NULL || (change.type == VT_EMPTY && source.vt != VT_NULL))
    {
        target.vt = change.type;
        return S_OK;
    }
    if (change.type == VT_DISPATCH || change.type == VT_UNKNOWN)
        return ToInterface(target, source, change);
    if (change.type == VT_BSTR)
        return ToText(target, source, change);
    return source.vt == VT_BSTR ? FromText(target, source, change) : FromNumber(target, source, change);
}

} // namespace

HRESULT WINAPI VariantChangeTypeEx(
    VARIANTARG* pvargDest, const VARIANTARG* pvarSrc, LCID lcid, USHORT wFlags, VARTYPE vt)
{
    const Locale* const locale = FindLocale(lcid);
    if (pvargDest == nullptr || pvarSrc == nullptr || locale == nullptr || wFlags != 0)
        return E_INVALIDARG;
    VARIANT source{};
    if (const HRESULT result = Resolve(*pvarSrc, source); FAILED(result))
        return result;
    if (const HRESULT result = CheckVariantType(vt); FAILED(result))
        return result;
    try
    {
        VARIANT target{};
        HRESULT result = ChangeValue(target, source, {*locale, vt});
        if (SUCCEEDED(result))
            result = VariantClear(pvargDest); // it may be the source
        if (SUCCEEDED(result))
            *pvargDest = target;
        else
            VariantClear(&target);
        return result;
    }
    catch (const std::bad_alloc&)
    {
        return E_OUTOFMEMORY;
    }
}

HRESULT WINAPI VariantChangeType(VARIANTARG* pvargDest, const VARIANTARG* pvarSrc, USHORT wFlags, VARTYPE vt)
{
    return VariantChangeTypeEx(pvargDest, pvarSrc, LOCALE_USER_DEFAULT, wFlags, vt);
}

HRESULT WINAPI VarR8FromCy(CY cyIn, DOUBLE* pdblOut)
{
    *pdblOut = DoubleOf(ExactOf(cyIn));
    return S_OK;
}

HRESULT WINAPI VarR8FromDec(const DECIMAL* pdecIn, DOUBLE* pdblOut)
{
    Exact number;
    if (!ExactOf(*pdecIn, number))
        return E_INVALIDARG;
    *pdblOut = DoubleOf(number);
    return S_OK;
}
