// Basic types of COM: texts and the flags that several interfaces share.
#pragma once

#include <guiddef.h>
#include <winerror.h>

typedef WCHAR OLECHAR;
typedef OLECHAR* LPOLESTR;
typedef const OLECHAR* LPCOLESTR;
#define OLESTR(text) L##text

// A text with its length in bytes, as 32 bits, in front of the first character.
typedef OLECHAR* BSTR;
typedef BSTR* LPBSTR;

// How a commit treats what others changed meanwhile.
typedef enum tagSTGC
{
    STGC_DEFAULT = 0,
    STGC_OVERWRITE = 1,
    STGC_ONLYIFCURRENT = 2,
    STGC_DANGEROUSLYCOMMITMERELYTODISKCACHE = 4,
    STGC_CONSOLIDATE = 8
} STGC;

// What Stat may leave out.
typedef enum tagSTATFLAG
{
    STATFLAG_DEFAULT = 0,
    STATFLAG_NONAME = 1,
    STATFLAG_NOOPEN = 2
} STATFLAG;
