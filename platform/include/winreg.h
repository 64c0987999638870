// The registry.
#pragma once

#include <minwindef.h>

typedef DWORD ACCESS_MASK;
typedef ACCESS_MASK REGSAM;

#define HKEY_CURRENT_USER ((HKEY)(LONG_PTR)(LONG)0x80000001)
#define HKEY_LOCAL_MACHINE ((HKEY)(LONG_PTR)(LONG)0x80000002)

#define KEY_QUERY_VALUE 0x0001
#define KEY_SET_VALUE 0x0002
#define KEY_ENUMERATE_SUB_KEYS 0x0008
#define KEY_READ 0x20019
#define KEY_WRITE 0x20006
#define KEY_EXECUTE KEY_READ
#define KEY_ALL_ACCESS 0xF003F

#define REG_OPTION_NON_VOLATILE 0

#define REG_CREATED_NEW_KEY 1
#define REG_OPENED_EXISTING_KEY 2

#define REG_NONE 0
#define REG_SZ 1
#define REG_EXPAND_SZ 2
#define REG_BINARY 3
#define REG_DWORD 4
#define REG_MULTI_SZ 7
#define REG_QWORD 11

EXTERN_C_START

LSTATUS WINAPI RegCreateKeyExW(HKEY key, LPCWSTR subKey, DWORD reserved, LPWSTR className, DWORD options, REGSAM access,
    LPSECURITY_ATTRIBUTES security, PHKEY result, LPDWORD disposition) QXP(RegCreateKeyExW);
LSTATUS WINAPI RegOpenKeyExW(HKEY key, LPCWSTR subKey, DWORD options, REGSAM access, PHKEY result) QXP(RegOpenKeyExW);
LSTATUS WINAPI RegOpenCurrentUser(REGSAM access, PHKEY result) QXP(RegOpenCurrentUser);
LSTATUS WINAPI RegCloseKey(HKEY key) QXP(RegCloseKey);
LSTATUS WINAPI RegDeleteKeyW(HKEY key, LPCWSTR subKey) QXP(RegDeleteKeyW);
LSTATUS WINAPI RegDeleteTreeW(HKEY key, LPCWSTR subKey) QXP(RegDeleteTreeW);

LSTATUS WINAPI RegQueryValueExW(HKEY key, LPCWSTR name, LPDWORD reserved, LPDWORD type, LPBYTE data, LPDWORD size)
    QXP(RegQueryValueExW);
LSTATUS WINAPI RegSetValueExW(HKEY key, LPCWSTR name, DWORD reserved, DWORD type, const BYTE* data, DWORD size)
    QXP(RegSetValueExW);
LSTATUS WINAPI RegDeleteValueW(HKEY key, LPCWSTR name) QXP(RegDeleteValueW);

EXTERN_C_END
