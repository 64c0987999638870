// Memory that ends where reading ends: the page behind it can't be touched, so a read too far ends the program.
#pragma once

#include <cstddef>
#include <cstring>
#include <string_view>

#if defined(_WIN32) // each system has its own call to protect a page, and the layer none
#include <windows.h>
#else
#include <sys/mman.h>
#endif

class PageEnd
{
public:
#if defined(_WIN32)
    PageEnd()
        : _memory(static_cast<char*>(VirtualAlloc(nullptr, 2 * PageSize, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE)))
    {
        DWORD before = 0;
        VirtualProtect(_memory + PageSize, PageSize, PAGE_NOACCESS, &before);
    }
    ~PageEnd()
    {
        VirtualFree(_memory, 0, MEM_RELEASE);
    }
#else
    PageEnd()
        : _memory(static_cast<char*>(
              mmap(nullptr, 2 * PageSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)))
    {
        mprotect(_memory + PageSize, PageSize, PROT_NONE);
    }
    ~PageEnd()
    {
        munmap(_memory, 2 * PageSize);
    }
#endif
    PageEnd(const PageEnd&) = delete;
    PageEnd& operator=(const PageEnd&) = delete;

    // The characters, copied so that the last one is the last that can be read.
    wchar_t* Place(std::wstring_view characters) const
    {
        const size_t bytes = characters.size() * sizeof(wchar_t);
        return static_cast<wchar_t*>(std::memcpy(_memory + PageSize - bytes, characters.data(), bytes));
    }

private:
    static constexpr size_t PageSize = 4096;
    char* _memory;
};
