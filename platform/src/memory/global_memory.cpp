// Global and local memory.
#include "memory/memory_blocks.h"

#include <windows.h>

#include <new>

using qxplatform::MemoryBlocks;

namespace
{

// Runs an allocation. The list of the blocks may throw when it grows; that becomes the documented error.
template <class Allocation>
HGLOBAL NullWithoutMemory(Allocation allocation)
try
{
    return allocation(MemoryBlocks::Instance());
}
catch (const std::bad_alloc&)
{
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return nullptr;
}

} // namespace

HGLOBAL WINAPI GlobalAlloc(UINT flags, SIZE_T size)
{
    return NullWithoutMemory([=](MemoryBlocks& blocks) { return blocks.Allocate(flags, size); });
}

HGLOBAL WINAPI GlobalReAlloc(HGLOBAL memory, SIZE_T size, UINT flags)
{
    return NullWithoutMemory([=](MemoryBlocks& blocks) { return blocks.Reallocate(memory, size, flags); });
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
    return NullWithoutMemory(
        [=](MemoryBlocks& blocks) { return blocks.Allocate(flags & (LMEM_MOVEABLE | LMEM_ZEROINIT), size); });
}

HLOCAL WINAPI LocalFree(HLOCAL memory)
{
    return MemoryBlocks::Instance().Free(memory);
}
