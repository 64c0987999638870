// Modules, procedures and resources.
#pragma once

#include <minwindef.h>

EXTERN_C_START

#define GET_MODULE_HANDLE_EX_FLAG_PIN 0x00000001
#define GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT 0x00000002
#define GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS 0x00000004

QXPLATFORM_API HMODULE WINAPI GetModuleHandleW(LPCWSTR lpModuleName);
QXPLATFORM_API BOOL WINAPI GetModuleHandleExW(DWORD dwFlags, LPCWSTR lpModuleName, HMODULE* phModule);
QXPLATFORM_API DWORD WINAPI GetModuleFileNameW(HMODULE hModule, LPWSTR lpFilename, DWORD nSize);
QXPLATFORM_API HMODULE WINAPI LoadLibraryW(LPCWSTR lpLibFileName);
QXPLATFORM_API BOOL WINAPI FreeLibrary(HMODULE hLibModule);
QXPLATFORM_API FARPROC WINAPI GetProcAddress(HMODULE hModule, LPCSTR lpProcName);

// A resource stands for its language or, where that isn't there, for the language without a region, then for none. A
// search without a language also takes those of the user, and in the end any.
QXPLATFORM_API HRSRC WINAPI FindResourceW(HMODULE hModule, LPCWSTR lpName, LPCWSTR lpType);
QXPLATFORM_API HRSRC WINAPI FindResourceExW(HMODULE hModule, LPCWSTR lpType, LPCWSTR lpName, WORD wLanguage);
QXPLATFORM_API HGLOBAL WINAPI LoadResource(HMODULE hModule, HRSRC hResInfo);
QXPLATFORM_API LPVOID WINAPI LockResource(HGLOBAL hResData);
QXPLATFORM_API DWORD WINAPI SizeofResource(HMODULE hModule, HRSRC hResInfo);
QXPLATFORM_API int WINAPI LoadStringW(HINSTANCE hInstance, UINT uID, LPWSTR lpBuffer, int cchBufferMax);

EXTERN_C_END
