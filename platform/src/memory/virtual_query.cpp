#include <memoryapi.h>

#include "base/fail.h"
#include "memory/memory_map.h"
#include "modules/image_segments.h"

#include <algorithm>

#include <dlfcn.h>

using namespace qxplatform;

namespace
{

// Programs use the lower half of the address space, except for its last page.
constexpr std::uintptr_t kEndOfMemory = 0x7FFFFFFFF000;

DWORD ProtectionOf(bool isReadable, bool isWritable, bool isExecutable)
{
    if (isExecutable)
        return isWritable ? PAGE_EXECUTE_READWRITE : isReadable ? PAGE_EXECUTE_READ : PAGE_EXECUTE;
    if (isWritable)
        return PAGE_READWRITE;
    return isReadable ? PAGE_READONLY : PAGE_NOACCESS;
}

void SetRange(MEMORY_BASIC_INFORMATION& information, std::uintptr_t begin, std::uintptr_t end)
{
    information.BaseAddress = reinterpret_cast<void*>(begin);
    information.RegionSize = end - begin;
}

// A part of an image whose pages have the same properties.
struct ImagePart
{
    std::uintptr_t begin;
    std::uintptr_t end;
    unsigned flags; // 0 for a gap between segments
};

// Returns the part of an image that contains an address.
ImagePart PartOf(const ImageSegments& image, std::uintptr_t address, std::uintptr_t end)
{
    ImagePart part{address, end, 0};
    for (const ElfW(Phdr)* header = image.Begin(); header != image.End(); ++header)
    {
        const std::uintptr_t first = image.AddressOf(*header);
        if (header->p_type != PT_LOAD || first == 0)
            continue;
        const std::uintptr_t begin = PageOf(first);
        const std::uintptr_t segmentEnd = PageOf(first + header->p_memsz + kPageSize - 1);
        if (begin > address)
            part.end = std::min(part.end, begin);
        else if (address < segmentEnd)
        {
            part.end = std::min(part.end, segmentEnd);
            part.flags = header->p_flags;
        }
    }
    // The loader makes a part of the data read-only after its relocation. The end of this part is rounded down to a
    // page.
    for (const ElfW(Phdr)* header = image.Begin(); header != image.End(); ++header)
    {
        const std::uintptr_t first = image.AddressOf(*header);
        if (header->p_type != PT_GNU_RELRO || first == 0)
            continue;
        const std::uintptr_t begin = PageOf(first);
        const std::uintptr_t readOnlyEnd = PageOf(first + header->p_memsz);
        if (address >= begin && address < readOnlyEnd)
            part = {address, std::min(part.end, readOnlyEnd), PF_R};
        else if (begin > address)
            part.end = std::min(part.end, begin);
    }
    return part;
}

bool DescribeImage(std::uintptr_t page, MEMORY_BASIC_INFORMATION& information)
{
    dl_find_object object;
    if (_dl_find_object(reinterpret_cast<void*>(page), &object) != 0)
        return false;
    const auto begin = reinterpret_cast<std::uintptr_t>(object.dlfo_map_start);
    const auto end = reinterpret_cast<std::uintptr_t>(object.dlfo_map_end);
    const ImageSegments image(begin, end);
    if (image.Begin() == image.End())
        return false;
    const ImagePart part = PartOf(image, page, PageOf(end + kPageSize - 1));
    SetRange(information, part.begin, part.end);
    information.AllocationBase = reinterpret_cast<void*>(image.ImageBegin());
    information.AllocationProtect = PAGE_EXECUTE_WRITECOPY;
    information.State = part.flags == 0 ? MEM_RESERVE : MEM_COMMIT;
    information.Protect =
        part.flags == 0 ? 0
                        : ProtectionOf((part.flags & PF_R) != 0, (part.flags & PF_W) != 0, (part.flags & PF_X) != 0);
    information.Type = MEM_IMAGE;
    return true;
}

} // namespace

SIZE_T WINAPI VirtualQuery(LPCVOID lpAddress, PMEMORY_BASIC_INFORMATION lpBuffer, SIZE_T dwLength)
{
    const std::uintptr_t page = PageOf(reinterpret_cast<std::uintptr_t>(lpAddress));
    if (dwLength < sizeof *lpBuffer)
        return static_cast<SIZE_T>(Fail(ERROR_BAD_LENGTH));
    if (page >= kEndOfMemory)
        return static_cast<SIZE_T>(Fail(ERROR_INVALID_PARAMETER));
    MEMORY_BASIC_INFORMATION information{};
    Mapping mapping;
    if (DescribeImage(page, information))
    {
    }
    else if (!FindMapping(page, mapping) || mapping.begin > page)
    {
        SetRange(information, page, mapping.end == 0 ? kEndOfMemory : std::min(mapping.begin, kEndOfMemory));
        information.State = MEM_FREE;
        information.Protect = PAGE_NOACCESS;
    }
    else
    {
        SetRange(information, page, mapping.end);
        information.AllocationBase = reinterpret_cast<void*>(mapping.begin);
        information.Protect = ProtectionOf(mapping.isReadable, mapping.isWritable, mapping.isExecutable);
        information.AllocationProtect = information.Protect;
        information.State = MEM_COMMIT;
        information.Type = mapping.isFile || mapping.isShared ? MEM_MAPPED : MEM_PRIVATE;
    }
    *lpBuffer = information;
    return sizeof information;
}
