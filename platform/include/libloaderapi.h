// Modules, procedures and resources.
#pragma once

#include <minwindef.h>

EXTERN_C_START

#define GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT 0x00000002
#define GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS 0x00000004

QXPLATFORM_API HMODULE WINAPI GetModuleHandleW(LPCWSTR lpModuleName);
QXPLATFORM_API BOOL WINAPI GetModuleHandleExW(DWORD dwFlags, LPCWSTR lpModuleName, HMODULE* phModule);
QXPLATFORM_API DWORD WINAPI GetModuleFileNameW(HMODULE hModule, LPWSTR lpFilename, DWORD nSize);
QXPLATFORM_API HMODULE WINAPI LoadLibraryW(LPCWSTR lpLibFileName);
QXPLATFORM_API BOOL WINAPI FreeLibrary(HMODULE hLibModule);
QXPLATFORM_API FARPROC WINAPI GetProcAddress(HMODULE hModule, LPCSTR lpProcName);

// A language with a region also matches the same language without a region, and any language matches a language-neutral
// resource. A search without a language uses the user's languages, and finally any language.
QXPLATFORM_API HRSRC WINAPI FindResourceW(HMODULE hModule, LPCWSTR lpName, LPCWSTR lpType);
QXPLATFORM_API HRSRC WINAPI FindResourceExW(HMODULE hModule, LPCWSTR lpType, LPCWSTR lpName, WORD wLanguage);
QXPLATFORM_API HGLOBAL WINAPI LoadResource(HMODULE hModule, HRSRC hResInfo);
QXPLATFORM_API LPVOID WINAPI LockResource(HGLOBAL hResData);
QXPLATFORM_API DWORD WINAPI SizeofResource(HMODULE hModule, HRSRC hResInfo);
QXPLATFORM_API int WINAPI LoadStringW(HINSTANCE hInstance, UINT uID, LPWSTR lpBuffer, int cchBufferMax);

typedef BOOL(CALLBACK* ENUMRESTYPEPROCW)(HMODULE hModule, LPWSTR lpType, LONG_PTR lParam);
typedef BOOL(CALLBACK* ENUMRESNAMEPROCW)(HMODULE hModule, LPCWSTR lpType, LPWSTR lpName, LONG_PTR lParam);
typedef BOOL(CALLBACK* ENUMRESLANGPROCW)(
    HMODULE hModule, LPCWSTR lpType, LPCWSTR lpName, WORD wLanguage, LONG_PTR lParam);
QXPLATFORM_API BOOL WINAPI EnumResourceTypesW(HMODULE hModule, ENUMRESTYPEPROCW lpEnumFunc, LONG_PTR lParam);
QXPLATFORM_API BOOL WINAPI EnumResourceNamesW(
    HMODULE hModule, LPCWSTR lpType, ENUMRESNAMEPROCW lpEnumFunc, LONG_PTR lParam);
QXPLATFORM_API BOOL WINAPI EnumResourceLanguagesW(
    HMODULE hModule, LPCWSTR lpType, LPCWSTR lpName, ENUMRESLANGPROCW lpEnumFunc, LONG_PTR lParam);
#define FindResourceEx FindResourceExW
#define FindResource FindResourceW
#define LoadString LoadStringW
#define EnumResourceTypes EnumResourceTypesW
#define EnumResourceNames EnumResourceNamesW
#define EnumResourceLanguages EnumResourceLanguagesW

EXTERN_C_END
