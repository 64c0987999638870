// The program headers of a loaded image, read from memory.
#pragma once

#include <cstddef>
#include <cstdint>

#include <link.h>

namespace qxplatform
{

constexpr std::uintptr_t kPageSize = 4096;

constexpr std::uintptr_t PageOf(std::uintptr_t address)
{
    return address / kPageSize * kPageSize;
}

class ImageSegments
{
public:
    // The range of an image, or of a part of the program, as _dl_find_object reports it. The headers of an image must
    // be in its first page. If they aren't, or if they are malformed, there are no segments.
    ImageSegments(std::uintptr_t begin, std::uintptr_t end);

    const ElfW(Phdr) * Begin() const { return _headers; }
    const ElfW(Phdr) * End() const { return _headers + _count; }

    std::uintptr_t ImageBegin() const { return _begin; }
    // Returns true for the program itself, which is never unloaded.
    bool IsProgram() const { return _isProgram; }

    // Returns the address of a segment, or 0 if the segment isn't completely inside the image.
    std::uintptr_t AddressOf(const ElfW(Phdr) & header) const
    {
        const std::uintptr_t address = _bias + header.p_vaddr;
        return address >= _begin && address <= _end && header.p_memsz <= _end - address ? address : 0;
    }

    // Returns the loaded segment that contains an address, or null.
    const ElfW(Phdr) * Find(std::uintptr_t address) const;

private:
    bool ReadProgram();
    void ReadImage();

    std::uintptr_t _begin;
    std::uintptr_t _end;
    std::uintptr_t _bias = 0;
    const ElfW(Phdr) * _headers = nullptr;
    unsigned _count = 0;
    bool _isProgram = false;
};

} // namespace qxplatform
