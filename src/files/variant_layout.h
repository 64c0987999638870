// How many bytes of its value a variant has in a file.
#pragma once

#include <windows.h>

#include <oleauto.h>

#include <cstddef>
#include <cstdint>

namespace qx
{

// Arrays hold arrays; files come from outside, and reading, writing and freeing take a call for each level.
constexpr int kMaxVariantDepth = 64;

// 0 for those that have none, and for VT_BSTR, whose length is its own.
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
