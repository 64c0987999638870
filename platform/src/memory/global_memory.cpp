// Global and local memory.
#include "memory/memory_blocks.h"

#include <windows.h>

using qxplatform::MemoryBlocks;

HGLOBAL WINAPI GlobalAlloc(UINT flags, SIZE_T size)
{
    return MemoryBlocks::Instance().Allocate(flags, size);
}

HGLOBAL WINAPI GlobalReAlloc(HGLOBAL memory, SIZE_T size, UINT flags)
{
    return MemoryBlocks::Instance().Reallocate(memory, size, flags);
}

HGLOBAL WINAPI GlobalFree(HGLOBAL memory)
{
    return MemoryBlocks::Instance().Free(memory);
}

LPVOID WINAPI GlobalLock(HGLOBAL memory)
{
    return MemoryBlocks::Instance().Lock(memory);
}

BOOL WINAPI GlobalUnlock(HGLOBAL memory)
{
    return MemoryBlocks::Instance().Unlock(memory);
}

SIZE_T WINAPI GlobalSize(HGLOBAL memory)
{
    return MemoryBlocks::Instance().Size(memory);
}

UINT WINAPI GlobalFlags(HGLOBAL memory)
{
    return MemoryBlocks::Instance().Flags(memory);
}

HLOCAL WINAPI LocalAlloc(UINT flags, SIZE_T size)
{
    static_assert(LMEM_MOVEABLE == GMEM_MOVEABLE && LMEM_ZEROINIT == GMEM_ZEROINIT);
    return MemoryBlocks::Instance().Allocate(flags & (LMEM_MOVEABLE | LMEM_ZEROINIT), size);
}

HLOCAL WINAPI LocalFree(HLOCAL memory)
{
    return MemoryBlocks::Instance().Free(memory);
}
