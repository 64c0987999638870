// The system's heap functions that are bound at run time, because some systems lack them.
#pragma once

#include <windows.h>

#include <heapapi.h>

#include <atomic>

namespace qx
{

// A function that the system lacks is null.
struct HeapFunctions
{
    BOOL(WINAPI* lock)(HANDLE) = nullptr;
    BOOL(WINAPI* unlock)(HANDLE) = nullptr;
    BOOL(WINAPI* walk)(HANDLE, PROCESS_HEAP_ENTRY*) = nullptr;
    BOOL(WINAPI* validate)(HANDLE, DWORD, const void*) = nullptr;
    SIZE_T(WINAPI* compact)(HANDLE, DWORD) = nullptr;
    // Faster alternatives that only the Linux layer has.
    BOOL(WINAPI* freeMarked)(HANDLE, DWORD, void*, DWORD) = nullptr; // frees a block if it begins with the given word
    SIZE_T(WINAPI* sizeOfAny)(HANDLE, DWORD, const void*) = nullptr; // HeapSize, safe for any pointer
    const volatile char* isSingleThreaded = nullptr;                 // not 0 while the process has one thread
};

extern std::atomic<const HeapFunctions*> heapFunctions; // null until they are resolved

const HeapFunctions& ResolveHeapFunctions();

// Resolves the functions at the first call.
inline const HeapFunctions& LateHeapFunctions()
{
    const HeapFunctions* const functions = heapFunctions.load(std::memory_order_acquire);
    return functions != nullptr ? *functions : ResolveHeapFunctions();
}

// Returns true if no other thread can use the heaps until this one starts another thread or calls foreign code.
inline bool IsOnlyThread()
{
    const HeapFunctions* const functions = heapFunctions.load(std::memory_order_acquire);
    return functions != nullptr && functions->isSingleThreaded != nullptr && *functions->isSingleThreaded != 0;
}

// Replaces the functions, for tests. Null restores the system's.
void ReplaceHeapFunctions(const HeapFunctions* functions);

} // namespace qx
