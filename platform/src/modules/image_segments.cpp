#include "modules/image_segments.h"

#include <algorithm>
#include <cstring>

#include <elf.h>

namespace qxplatform
{

ImageSegments::ImageSegments(std::uintptr_t begin, std::uintptr_t end) : _begin(begin), _end(end)
{
    const auto& head = *reinterpret_cast<const ElfW(Ehdr)*>(begin);
    if (std::memcmp(head.e_ident, ELFMAG, SELFMAG) != 0 || head.e_phentsize != sizeof(ElfW(Phdr)) ||
        head.e_phoff > kPageSize || head.e_phnum > (kPageSize - head.e_phoff) / sizeof(ElfW(Phdr)))
        return;
    const auto* const headers = reinterpret_cast<const ElfW(Phdr)*>(begin + head.e_phoff);
    const auto* const first = std::find_if(
        headers, headers + head.e_phnum, [](const ElfW(Phdr) & header) { return header.p_type == PT_LOAD; });
    if (first == headers + head.e_phnum)
        return;
    _headers = headers;
    _count = head.e_phnum;
    _bias = begin - PageOf(first->p_vaddr);
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
