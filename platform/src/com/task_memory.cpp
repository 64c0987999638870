// The allocator for what one side of an interface hands over and the other side frees.
#include <combaseapi.h>

#include <cstdlib>

LPVOID WINAPI CoTaskMemAlloc(SIZE_T size)
{
    return size <= PTRDIFF_MAX ? std::malloc(size != 0 ? size : 1) : nullptr;
}

LPVOID WINAPI CoTaskMemRealloc(LPVOID memory, SIZE_T size)
{
    if (memory == nullptr)
        return CoTaskMemAlloc(size);
    if (size == 0)
    {
        std::free(memory);
        return nullptr;
    }
    return size <= PTRDIFF_MAX ? std::realloc(memory, size) : nullptr;
}

void WINAPI CoTaskMemFree(LPVOID memory)
{
    std::free(memory);
}
