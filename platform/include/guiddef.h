// 128-bit identifiers: references, comparison, definition.
#pragma once

#include <string.h>

#include <minwindef.h>

typedef GUID* LPGUID;
typedef const GUID* LPCGUID;
typedef IID* LPIID;
typedef CLSID* LPCLSID;
typedef GUID FMTID;
typedef FMTID* LPFMTID;

#ifdef __cplusplus
#define REFGUID const GUID&
#define REFIID const IID&
#define REFCLSID const CLSID&
#define REFFMTID const FMTID&
#else
#define REFGUID const GUID* const
#define REFIID const IID* const
#define REFCLSID const CLSID* const
#define REFFMTID const FMTID* const
#endif

// DEFINE_GUID defines the identifier if INITGUID is defined, in any number of translation units. Otherwise it only
// declares the identifier.
#ifdef INITGUID
#define DEFINE_GUID(name, l, w1, w2, b1, b2, b3, b4, b5, b6, b7, b8)                                                   \
    EXTERN_C const GUID name __attribute__((weak));                                                                    \
    const GUID name = {l, w1, w2, {b1, b2, b3, b4, b5, b6, b7, b8}}
#else
#define DEFINE_GUID(name, l, w1, w2, b1, b2, b3, b4, b5, b6, b7, b8) EXTERN_C const GUID name
#endif

EXTERN_C const GUID GUID_NULL QXP(GUID_NULL);
#define CLSID_NULL GUID_NULL

#ifdef __cplusplus
inline int IsEqualGUID(REFGUID left, REFGUID right)
{
    return memcmp(&left, &right, sizeof(GUID)) == 0;
}
inline bool operator==(REFGUID left, REFGUID right)
{
    return IsEqualGUID(left, right) != 0;
}
inline bool operator!=(REFGUID left, REFGUID right)
{
    return !(left == right);
}
#else
#define IsEqualGUID(left, right) (memcmp((left), (right), sizeof(GUID)) == 0)
#endif
#define IsEqualIID(left, right) IsEqualGUID(left, right)
