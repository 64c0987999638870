// Modules, procedures and resources.
#pragma once

#include <minwindef.h>

EXTERN_C_START

#define GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT 0x00000002
#define GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS 0x00000004

HMODULE WINAPI GetModuleHandleW(LPCWSTR lpModuleName) QXP(GetModuleHandleW);
BOOL WINAPI GetModuleHandleExW(DWORD dwFlags, LPCWSTR lpModuleName, HMODULE* phModule) QXP(GetModuleHandleExW);
DWORD WINAPI GetModuleFileNameW(HMODULE hModule, LPWSTR lpFilename, DWORD nSize) QXP(GetModuleFileNameW);
DWORD WINAPI GetModuleFileNameA(HMODULE hModule, LPSTR lpFilename, DWORD nSize) QXP(GetModuleFileNameA);
HMODULE WINAPI LoadLibraryW(LPCWSTR lpLibFileName) QXP(LoadLibraryW);
BOOL WINAPI FreeLibrary(HMODULE hLibModule) QXP(FreeLibrary);
FARPROC WINAPI GetProcAddress(HMODULE hModule, LPCSTR lpProcName) QXP(GetProcAddress);

// A language with a region also matches the same language without a region, and any language matches a language-neutral
// resource. A search without a language uses the user's languages, and finally any language.
HRSRC WINAPI FindResourceW(HMODULE hModule, LPCWSTR lpName, LPCWSTR lpType) QXP(FindResourceW);
HRSRC WINAPI FindResourceExW(HMODULE hModule, LPCWSTR lpType, LPCWSTR lpName, WORD wLanguage) QXP(FindResourceExW);
HGLOBAL WINAPI LoadResource(HMODULE hModule, HRSRC hResInfo) QXP(LoadResource);
LPVOID WINAPI LockResource(HGLOBAL hResData) QXP(LockResource);
DWORD WINAPI SizeofResource(HMODULE hModule, HRSRC hResInfo) QXP(SizeofResource);
int WINAPI LoadStringW(HINSTANCE hInstance, UINT uID, LPWSTR lpBuffer, int cchBufferMax) QXP(LoadStringW);

typedef BOOL(CALLBACK* ENUMRESTYPEPROCW)(HMODULE hModule, LPWSTR lpType, LONG_PTR lParam);
typedef BOOL(CALLBACK* ENUMRESNAMEPROCW)(HMODULE hModule, LPCWSTR lpType, LPWSTR lpName, LONG_PTR lParam);
typedef BOOL(CALLBACK* ENUMRESLANGPROCW)(
    HMODULE hModule, LPCWSTR lpType, LPCWSTR lpName, WORD wLanguage, LONG_PTR lParam);
BOOL WINAPI EnumResourceTypesW(HMODULE hModule, ENUMRESTYPEPROCW lpEnumFunc, LONG_PTR lParam) QXP(EnumResourceTypesW);
BOOL WINAPI EnumResourceNamesW(HMODULE hModule, LPCWSTR lpType, ENUMRESNAMEPROCW lpEnumFunc, LONG_PTR lParam)
    QXP(EnumResourceNamesW);
BOOL WINAPI EnumResourceLanguagesW(HMODULE hModule, LPCWSTR lpType, LPCWSTR lpName, ENUMRESLANGPROCW lpEnumFunc,
    LONG_PTR lParam) QXP(EnumResourceLanguagesW);
#define EnumResourceTypes EnumResourceTypesW

EXTERN_C_END
