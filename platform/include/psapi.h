// The modules of a process.
#pragma once

#include <minwindef.h>

EXTERN_C_START

typedef struct _MODULEINFO
{
    LPVOID lpBaseOfDll;
    DWORD SizeOfImage;
    LPVOID EntryPoint;
} MODULEINFO, *LPMODULEINFO;

// These functions support only the calling process; others fail with ERROR_ACCESS_DENIED. The list contains the
// program, the libraries and the kernel's own image, whose path is only a name.
BOOL WINAPI EnumProcessModules(HANDLE hProcess, HMODULE* lphModule, DWORD cb, DWORD* lpcbNeeded)
    QXP(EnumProcessModules);
BOOL WINAPI GetModuleInformation(HANDLE hProcess, HMODULE hModule, LPMODULEINFO lpmodinfo, DWORD cb)
    QXP(GetModuleInformation);
DWORD WINAPI GetModuleBaseNameW(HANDLE hProcess, HMODULE hModule, LPWSTR lpBaseName, DWORD nSize)
    QXP(GetModuleBaseNameW);
DWORD WINAPI GetModuleFileNameExW(HANDLE hProcess, HMODULE hModule, LPWSTR lpFilename, DWORD nSize)
    QXP(GetModuleFileNameExW);

EXTERN_C_END
