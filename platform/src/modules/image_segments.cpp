#include "modules/image_segments.h"

#include <algorithm>
#include <cstring>

#include <elf.h>
#include <sys/auxv.h>

namespace qxplatform
{

ImageSegments::ImageSegments(std::uintptr_t begin, std::uintptr_t end) : _begin(begin), _end(end)
{
    if (!ReadProgram())
        ReadImage();
}

// Reads the program's headers and extends the range to all of its segments. Needed because the kernel maps nothing into
// the gaps between a program's segments: [begin, end) then covers a single segment, often without the headers. Returns
// false for a range outside the program.
bool ImageSegments::ReadProgram()
{
    const auto* const headers = reinterpret_cast<const ElfW(Phdr)*>(getauxval(AT_PHDR));
    const auto count = static_cast<unsigned>(getauxval(AT_PHNUM));
    if (headers == nullptr)
        return false;
    std::uintptr_t bias = 0;
    std::uintptr_t lowest = UINTPTR_MAX;
    std::uintptr_t highest = 0;
    for (const ElfW(Phdr)* header = headers; header != headers + count; ++header)
    {
        if (header->p_type == PT_PHDR)
            bias = reinterpret_cast<std::uintptr_t>(headers) - header->p_vaddr;
        if (header->p_type != PT_LOAD)
            continue;
        lowest = std::min<std::uintptr_t>(lowest, PageOf(header->p_vaddr));
        highest = std::max<std::uintptr_t>(highest, header->p_vaddr + header->p_memsz);
    }
    // Another image may be in a gap.
    const bool isInSegment = std::any_of(headers, headers + count,
        [&](const ElfW(Phdr) & header)
        {
            const std::uintptr_t begin = bias + header.p_vaddr;
            return header.p_type == PT_LOAD && _begin >= PageOf(begin) && _begin < begin + header.p_memsz;
        });
    if (!isInSegment || _end > bias + highest)
        return false;
    _begin = bias + lowest;
    _end = bias + highest;
    _bias = bias;
    _headers = headers;
    _count = count;
    _isProgram = true;
    return true;
}

void ImageSegments::ReadImage()
{
    const auto& head = *reinterpret_cast<const ElfW(Ehdr)*>(_begin);
    if (std::memcmp(head.e_ident, ELFMAG, SELFMAG) != 0 || head.e_phentsize != sizeof(ElfW(Phdr)) ||
        head.e_phoff > kPageSize || head.e_phnum > (kPageSize - head.e_phoff) / sizeof(ElfW(Phdr)))
        return;
    const auto* const headers = reinterpret_cast<const ElfW(Phdr)*>(_begin + head.e_phoff);
    const auto* const first = std::find_if(
        headers, headers + head.e_phnum, [](const ElfW(Phdr) & header) { return header.p_type == PT_LOAD; });
    if (first == headers + head.e_phnum)
        return;
    _headers = headers;
    _count = head.e_phnum;
    _bias = _begin - PageOf(first->p_vaddr);
}

const ElfW(Phdr) * ImageSegments::Find(std::uintptr_t address) const
{
    for (const ElfW(Phdr)* header = Begin(); header != End(); ++header)
    {
        const std::uintptr_t begin = AddressOf(*header);
        if (header->p_type == PT_LOAD && begin != 0 && address - begin < header->p_memsz)
            return header;
    }
    return nullptr;
}

} // namespace qxplatform
