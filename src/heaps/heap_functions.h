// The heap functions that are bound at run time.
#pragma once

#include <windows.h>

#include <heapapi.h>

namespace qx
{

// A null function is missing on this system.
struct HeapFunctions
{
    BOOL(WINAPI* lock)(HANDLE) = nullptr;
    BOOL(WINAPI* unlock)(HANDLE) = nullptr;
    BOOL(WINAPI* walk)(HANDLE, PROCESS_HEAP_ENTRY*) = nullptr;
    BOOL(WINAPI* validate)(HANDLE, DWORD, const void*) = nullptr;
    SIZE_T(WINAPI* compact)(HANDLE, DWORD) = nullptr;
};

// Resolves the functions at the first call.
const HeapFunctions& LateHeapFunctions();

// Replaces the functions, for tests. Null restores the system's.
void ReplaceHeapFunctions(const HeapFunctions* functions);

} // namespace qx
