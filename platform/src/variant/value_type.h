// Which types a variant and a safe array can hold, and how much room a value takes.
#pragma once

#include <oaidl.h>

namespace qxplatform
{

struct ValueType
{
    VARTYPE type;
    USHORT size;     // 0: nothing but the type
    USHORT features; // FADF_ of an array with such elements; 0 where there are no such arrays
    bool inVariant;
};

// Null for what is no type, which VT_RECORD is too: the layer has no descriptions of records.
const ValueType* FindValueType(VARTYPE type);

// S_OK, or DISP_E_BADVARTYPE for what no variant can hold. Only VT_ARRAY and VT_BYREF may go with a type.
HRESULT CheckVariantType(VARTYPE type);

// Whole numbers, and how many bytes they have.
bool IsInteger(VARTYPE type);
bool IsSignedInteger(VARTYPE type);

} // namespace qxplatform
