// The types that variants and safe arrays can contain, and the size of their values.
#pragma once

#include <oaidl.h>

namespace qxplatform
{

struct ValueType
{
    VARTYPE type;
    USHORT size;     // 0 if the type has no value
    USHORT features; // FADF_ flags of an array with such elements; 0 if there are no such arrays
    bool inVariant;
};

// Returns null for an invalid type. This includes VT_RECORD: the layer has no descriptions of records.
const ValueType* FindValueType(VARTYPE type);

// Returns S_OK, or DISP_E_BADVARTYPE if no variant can have the type. Only VT_ARRAY and VT_BYREF may be combined with a
// type.
HRESULT CheckVariantType(VARTYPE type);

// Return true for integers, and for signed integers.
bool IsInteger(VARTYPE type);
bool IsSignedInteger(VARTYPE type);

} // namespace qxplatform
