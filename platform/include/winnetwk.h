// Drives that are connected to shares.
#pragma once

#include <handleapi.h>
#include <minwindef.h>

EXTERN_C_START

#define RESOURCE_REMEMBERED 0x00000003
#define RESOURCETYPE_DISK 0x00000001
#define RESOURCEDISPLAYTYPE_SHARE 0x00000003
#define RESOURCEUSAGE_CONNECTABLE 0x00000001
#define UNIVERSAL_NAME_INFO_LEVEL 0x00000001

typedef struct _NETRESOURCEW
{
    DWORD dwScope;
    DWORD dwType;
    DWORD dwDisplayType;
    DWORD dwUsage;
    LPWSTR lpLocalName;
    LPWSTR lpRemoteName;
    LPWSTR lpComment;
    LPWSTR lpProvider;
} NETRESOURCEW, *LPNETRESOURCEW;

typedef struct _UNIVERSAL_NAME_INFOW
{
    LPWSTR lpUniversalName;
} UNIVERSAL_NAME_INFOW, *LPUNIVERSAL_NAME_INFOW;

// These functions return an error code and don't set the last error.

// Starts an enumeration of the connections that exist at this call. Supports only RESOURCE_REMEMBERED with
// RESOURCETYPE_DISK; other values fail with ERROR_NOT_SUPPORTED.
DWORD WINAPI WNetOpenEnumW(DWORD dwScope, DWORD dwType, DWORD dwUsage, LPNETRESOURCEW lpNetResource, LPHANDLE lphEnum)
    QXP(WNetOpenEnumW);
DWORD WINAPI WNetEnumResourceW(HANDLE hEnum, LPDWORD lpcCount, LPVOID lpBuffer, LPDWORD lpBufferSize)
    QXP(WNetEnumResourceW);
DWORD WINAPI WNetCloseEnum(HANDLE hEnum) QXP(WNetCloseEnum);

// Supports only UNIVERSAL_NAME_INFO_LEVEL; other levels fail with ERROR_INVALID_LEVEL.
DWORD WINAPI WNetGetUniversalNameW(LPCWSTR lpLocalPath, DWORD dwInfoLevel, LPVOID lpBuffer, LPDWORD lpBufferSize)
    QXP(WNetGetUniversalNameW);

EXTERN_C_END
