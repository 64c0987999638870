// Basic COM types: strings, and flags shared by several interfaces.
#pragma once

#include <guiddef.h>
#include <winerror.h>

typedef WCHAR OLECHAR;
typedef OLECHAR* LPOLESTR;
typedef const OLECHAR* LPCOLESTR;

// A string preceded by its length in bytes as a 32-bit number.
typedef OLECHAR* BSTR;
typedef BSTR* LPBSTR;

// How a commit treats changes made by others in the meantime.
typedef enum tagSTGC
{
    STGC_DEFAULT = 0,
    STGC_OVERWRITE = 1,
    STGC_ONLYIFCURRENT = 2,
    STGC_DANGEROUSLYCOMMITMERELYTODISKCACHE = 4,
    STGC_CONSOLIDATE = 8
} STGC;

// Flags of Stat: the members to omit.
typedef enum tagSTATFLAG
{
    STATFLAG_DEFAULT = 0,
    STATFLAG_NONAME = 1,
    STATFLAG_NOOPEN = 2
} STATFLAG;

// Dates are days since 30 December 1899, with the time of day in the fraction. For negative dates the fraction is still
// counted forward from midnight: -1.25 is 6 a.m. on the 29th.
typedef double DATE;

typedef short VARIANT_BOOL;
#define VARIANT_TRUE ((VARIANT_BOOL)-1)
#define VARIANT_FALSE ((VARIANT_BOOL)0)

typedef LONG SCODE;

// Ten-thousandths of a unit.
typedef union tagCY
{
    struct
    {
        ULONG Lo;
        LONG Hi;
    };
    LONGLONG int64;
} CY, *LPCY;
typedef CY CURRENCY;

// A 96-bit integer divided by 10 to the power of `scale`, at most 28.
typedef struct tagDEC
{
    USHORT wReserved; // holds the type if the number is part of a variant
    union
    {
        struct
        {
            BYTE scale;
            BYTE sign; // 0 or DECIMAL_NEG
        };
        USHORT signscale;
    };
    ULONG Hi32;
    union
    {
        struct
        {
            ULONG Lo32;
            ULONG Mid32;
        };
        ULONGLONG Lo64;
    };
} DECIMAL, *LPDECIMAL;
#define DECIMAL_NEG ((BYTE)0x80)

typedef unsigned short VARTYPE;

enum VARENUM
{
    VT_EMPTY = 0,
    VT_NULL = 1,
    VT_I2 = 2,
    VT_I4 = 3,
    VT_R4 = 4,
    VT_R8 = 5,
    VT_CY = 6,
    VT_DATE = 7,
    VT_BSTR = 8,
    VT_DISPATCH = 9,
    VT_ERROR = 10,
    VT_BOOL = 11,
    VT_VARIANT = 12,
    VT_UNKNOWN = 13,
    VT_DECIMAL = 14,
    VT_I1 = 16,
    VT_UI1 = 17,
    VT_UI2 = 18,
    VT_UI4 = 19,
    VT_I8 = 20,
    VT_UI8 = 21,
    VT_INT = 22,
    VT_UINT = 23,
    VT_VOID = 24,
    VT_HRESULT = 25,
    VT_PTR = 26,
    VT_SAFEARRAY = 27,
    VT_CARRAY = 28,
    VT_USERDEFINED = 29,
    VT_LPSTR = 30,
    VT_LPWSTR = 31,
    VT_RECORD = 36,
    VT_INT_PTR = 37,
    VT_UINT_PTR = 38,
    VT_FILETIME = 64,
    VT_BLOB = 65,
    VT_STREAM = 66,
    VT_STORAGE = 67,
    VT_STREAMED_OBJECT = 68,
    VT_STORED_OBJECT = 69,
    VT_BLOB_OBJECT = 70,
    VT_CF = 71,
    VT_CLSID = 72,
    VT_VERSIONED_STREAM = 73,
    VT_BSTR_BLOB = 0xfff,
    VT_VECTOR = 0x1000,
    VT_ARRAY = 0x2000,
    VT_BYREF = 0x4000,
    VT_RESERVED = 0x8000,
    VT_ILLEGAL = 0xffff,
    VT_ILLEGALMASKED = 0xfff,
    VT_TYPEMASK = 0xfff
};

#ifdef __cplusplus
static_assert(sizeof(CY) == 8 && sizeof(DECIMAL) == 16);
#endif
