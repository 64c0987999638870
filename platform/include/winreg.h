// The registry.
#pragma once

#include <minwindef.h>

typedef DWORD ACCESS_MASK;
typedef ACCESS_MASK REGSAM;

#define HKEY_CURRENT_USER ((HKEY)(LONG_PTR)(LONG)0x80000001)
#define HKEY_LOCAL_MACHINE ((HKEY)(LONG_PTR)(LONG)0x80000002)

#define KEY_QUERY_VALUE 0x0001
#define KEY_SET_VALUE 0x0002
#define KEY_CREATE_SUB_KEY 0x0004
#define KEY_ENUMERATE_SUB_KEYS 0x0008
#define KEY_NOTIFY 0x0010
#define KEY_CREATE_LINK 0x0020
#define KEY_WOW64_64KEY 0x0100
#define KEY_WOW64_32KEY 0x0200
#define KEY_READ 0x20019
#define KEY_WRITE 0x20006
#define KEY_EXECUTE KEY_READ
#define KEY_ALL_ACCESS 0xF003F

#define REG_OPTION_NON_VOLATILE 0
#define REG_OPTION_VOLATILE 1

#define REG_CREATED_NEW_KEY 1
#define REG_OPENED_EXISTING_KEY 2

#define REG_NONE 0
#define REG_SZ 1
#define REG_EXPAND_SZ 2
#define REG_BINARY 3
#define REG_DWORD 4
#define REG_DWORD_BIG_ENDIAN 5
#define REG_LINK 6
#define REG_MULTI_SZ 7
#define REG_QWORD 11

EXTERN_C_START

QXPLATFORM_API LSTATUS WINAPI RegCreateKeyExW(HKEY key, LPCWSTR subKey, DWORD reserved, LPWSTR className, DWORD options,
    REGSAM access, LPSECURITY_ATTRIBUTES security, PHKEY result, LPDWORD disposition);
QXPLATFORM_API LSTATUS WINAPI RegOpenKeyExW(HKEY key, LPCWSTR subKey, DWORD options, REGSAM access, PHKEY result);
QXPLATFORM_API LSTATUS WINAPI RegOpenCurrentUser(REGSAM access, PHKEY result);
QXPLATFORM_API LSTATUS WINAPI RegCloseKey(HKEY key);
QXPLATFORM_API LSTATUS WINAPI RegDeleteKeyW(HKEY key, LPCWSTR subKey);
QXPLATFORM_API LSTATUS WINAPI RegDeleteTreeW(HKEY key, LPCWSTR subKey);

QXPLATFORM_API LSTATUS WINAPI RegQueryValueExW(
    HKEY key, LPCWSTR name, LPDWORD reserved, LPDWORD type, LPBYTE data, LPDWORD size);
QXPLATFORM_API LSTATUS WINAPI RegSetValueExW(
    HKEY key, LPCWSTR name, DWORD reserved, DWORD type, const BYTE* data, DWORD size);
QXPLATFORM_API LSTATUS WINAPI RegDeleteValueW(HKEY key, LPCWSTR name);

// Sizes of names are in characters: with the terminator where the caller gives them, without where the call does.
QXPLATFORM_API LSTATUS WINAPI RegEnumKeyExW(HKEY key, DWORD index, LPWSTR name, LPDWORD nameSize, LPDWORD reserved,
    LPWSTR className, LPDWORD classSize, PFILETIME lastWrite);
QXPLATFORM_API LSTATUS WINAPI RegEnumValueW(
    HKEY key, DWORD index, LPWSTR name, LPDWORD nameSize, LPDWORD reserved, LPDWORD type, LPBYTE data, LPDWORD size);
QXPLATFORM_API LSTATUS WINAPI RegQueryInfoKeyW(HKEY key, LPWSTR className, LPDWORD classSize, LPDWORD reserved,
    LPDWORD subKeys, LPDWORD maxSubKeyName, LPDWORD maxClass, LPDWORD values, LPDWORD maxValueName,
    LPDWORD maxValueSize, LPDWORD securitySize, PFILETIME lastWrite);

EXTERN_C_END
