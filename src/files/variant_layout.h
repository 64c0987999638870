// The size of each variant type's value in a file.
#pragma once

#include <windows.h>

#include <oleauto.h>

#include <cstddef>
#include <cstdint>

namespace qx
{

// The nesting limit for arrays. Files may come from untrusted sources, and reading, writing and freeing recurse once
// for each level.
constexpr int kMaxVariantDepth = 64;

// Returns 0 for types without a value, and for VT_BSTR, whose length varies.
constexpr std::uint8_t VariantPayloadSize(VARTYPE type)
{
    switch (type)
    {
    case VT_I1:
    case VT_UI1:
        return 1;
    case VT_I2:
    case VT_BOOL:
    case VT_UI2:
    case VT_FILETIME:
        return 2;
    case VT_I4:
    case VT_R4:
    case VT_ERROR:
    case VT_UI4:
    case VT_INT:
    case VT_UINT:
    case VT_CLSID:
        return 4;
    case VT_R8:
    case VT_CY:
    case VT_DATE:
    case VT_I8:
    case VT_UI8:
        return 8;
    default:
        return 0;
    }
}

} // namespace qx
