// Compound files: opening them, access modes, and error codes.
#pragma once

#include <combaseapi.h>

// How an element is accessed.
#define STGM_READ 0x00000000
#define STGM_WRITE 0x00000001
#define STGM_READWRITE 0x00000002

// The access that others may have while the element is open.
#define STGM_SHARE_EXCLUSIVE 0x00000010
#define STGM_SHARE_DENY_WRITE 0x00000020
#define STGM_SHARE_DENY_READ 0x00000030
#define STGM_SHARE_DENY_NONE 0x00000040

#define STGM_DIRECT 0x00000000
#define STGM_DIRECT_SWMR 0x00400000
#define STGM_SIMPLE 0x08000000

#define E_PENDING ((HRESULT)0x8000000A) // the data isn't available yet
#define STG_E_FILENOTFOUND ((HRESULT)0x80030002)
#define STG_E_PATHNOTFOUND ((HRESULT)0x80030003)
#define STG_E_TOOMANYOPENFILES ((HRESULT)0x80030004)
#define STG_E_ACCESSDENIED ((HRESULT)0x80030005)
#define STG_E_SHAREVIOLATION ((HRESULT)0x80030020)
#define STG_E_FILEALREADYEXISTS ((HRESULT)0x80030050) // the file exists and isn't a storage
#define STG_E_INVALIDHEADER ((HRESULT)0x800300FB)
#define STG_E_INVALIDNAME ((HRESULT)0x800300FC)
#define STG_E_INVALIDFLAG ((HRESULT)0x800300FF)
#define STG_E_DOCFILECORRUPT ((HRESULT)0x80030109)

EXTERN_C_START

// Returns S_OK if the file begins like a compound file and S_FALSE if it doesn't.
HRESULT WINAPI StgIsStorageFile(const WCHAR* pwcsName) QXP(StgIsStorageFile);

// Opens a compound file for reading. `pstgPriority` and `snbExclude` must be null.
HRESULT WINAPI StgOpenStorage(const WCHAR* pwcsName, IStorage* pstgPriority, DWORD grfMode, SNB snbExclude,
    DWORD reserved, IStorage** ppstgOpen) QXP(StgOpenStorage);

EXTERN_C_END
