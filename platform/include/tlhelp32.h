// Snapshots of the modules of a process. The layer has no snapshots; these are for late binding.
#pragma once

#include <minwindef.h>

#define TH32CS_SNAPMODULE 0x00000008
#define MAX_MODULE_NAME32 255

typedef struct tagMODULEENTRY32W
{
    DWORD dwSize;
    DWORD th32ModuleID;
    DWORD th32ProcessID;
    DWORD GlblcntUsage;
    DWORD ProccntUsage;
    BYTE* modBaseAddr;
    DWORD modBaseSize;
    HMODULE hModule;
    WCHAR szModule[MAX_MODULE_NAME32 + 1];
    WCHAR szExePath[MAX_PATH];
} MODULEENTRY32W;
