// The allocator for memory that one side of an interface allocates and the other side frees.
#include <combaseapi.h>

#include <cstdlib>

LPVOID WINAPI CoTaskMemAlloc(SIZE_T size)
{
    return size <= PTRDIFF_MAX ? std::malloc(size != 0 ? size : 1) : nullptr;
}

void WINAPI CoTaskMemFree(LPVOID memory)
{
    std::free(memory);
}
