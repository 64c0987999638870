#include "variant/value_type.h"

#include <algorithm>
#include <iterator>

namespace qxplatform
{

namespace
{

constexpr USHORT kPlain = FADF_HAVEVARTYPE;

constexpr ValueType kTypes[] = {
    {VT_EMPTY, 0, 0, true},
    {VT_NULL, 0, 0, true},
    {VT_I2, 2, kPlain, true},
    {VT_I4, 4, kPlain, true},
    {VT_R4, 4, kPlain, true},
    {VT_R8, 8, kPlain, true},
    {VT_CY, 8, kPlain, true},
    {VT_DATE, 8, kPlain, true},
    {VT_BSTR, 8, kPlain | FADF_BSTR, true},
    {VT_DISPATCH, 8, FADF_HAVEIID | FADF_DISPATCH, true},
    {VT_ERROR, 4, kPlain, true},
    {VT_BOOL, 2, kPlain, true},
    {VT_VARIANT, sizeof(VARIANT), kPlain | FADF_VARIANT, true}, // in a variant only by reference
    {VT_UNKNOWN, 8, FADF_HAVEIID | FADF_UNKNOWN, true},
    {VT_DECIMAL, sizeof(DECIMAL), kPlain, true},
    {VT_I1, 1, kPlain, true},
    {VT_UI1, 1, kPlain, true},
    {VT_UI2, 2, kPlain, true},
    {VT_UI4, 4, kPlain, true},
    {VT_I8, 8, kPlain, true},
    {VT_UI8, 8, kPlain, true},
    {VT_INT, 4, kPlain, true},
    {VT_UINT, 4, kPlain, true},
    {VT_INT_PTR, 8, kPlain, false},
    {VT_UINT_PTR, 8, kPlain, false},
};

constexpr VARTYPE kIntegers[] = {VT_I1, VT_UI1, VT_I2, VT_UI2, VT_I4, VT_UI4, VT_INT, VT_UINT, VT_I8, VT_UI8};
constexpr VARTYPE kSignedIntegers[] = {VT_I1, VT_I2, VT_I4, VT_INT, VT_I8};

} // namespace

const ValueType* FindValueType(VARTYPE type)
{
    const ValueType* const row =
        std::find_if(std::begin(kTypes), std::end(kTypes), [&](const ValueType& known) { return known.type == type; });
    return row != std::end(kTypes) ? row : nullptr;
}

HRESULT CheckVariantType(VARTYPE type)
{
    constexpr VARTYPE kFlags = VT_ARRAY | VT_BYREF;
    const ValueType* const known = FindValueType(type & static_cast<VARTYPE>(~kFlags));
    if (known == nullptr || !known->inVariant)
        return DISP_E_BADVARTYPE;
    return (type & kFlags) == 0 || known->size != 0 ? S_OK : DISP_E_BADVARTYPE;
}

bool IsInteger(VARTYPE type)
{
    return std::find(std::begin(kIntegers), std::end(kIntegers), type) != std::end(kIntegers);
}

bool IsSignedInteger(VARTYPE type)
{
    return std::find(std::begin(kSignedIntegers), std::end(kSignedIntegers), type) != std::end(kSignedIntegers);
}

} // namespace qxplatform
