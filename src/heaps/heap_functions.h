// The heap functions that are bound at run time.
#pragma once

#include <windows.h>

#include <heapapi.h>

#include <atomic>

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

extern std::atomic<const HeapFunctions*> heapFunctions; // null until they are resolved

const HeapFunctions& ResolveHeapFunctions();

// Resolves the functions at the first call.
inline const HeapFunctions& LateHeapFunctions()
{
    const HeapFunctions* const functions = heapFunctions.load(std::memory_order_acquire);
    return functions != nullptr ? *functions : ResolveHeapFunctions();
}

// Replaces the functions, for tests. Null restores the system's.
void ReplaceHeapFunctions(const HeapFunctions* functions);

} // namespace qx
