#include "stack/module_tables.h"

#include "modules/image_segments.h"

#include <algorithm>
#include <cstring>

#include <dlfcn.h>
#include <elf.h>
#include <link.h>

namespace qxplatform
{
namespace
{

TableBytes BytesOf(const ImageSegments& segments, const ElfW(Phdr) & header)
{
    const auto* const begin = reinterpret_cast<const std::uint8_t*>(segments.AddressOf(header));
    return begin == nullptr ? TableBytes() : TableBytes{begin, begin + header.p_memsz};
}

// Returns the readable segment that contains an address.
TableBytes SegmentAround(const ImageSegments& segments, const void* address)
{
    const ElfW(Phdr)* const header = segments.Find(reinterpret_cast<std::uintptr_t>(address));
    return header == nullptr || (header->p_flags & PF_R) == 0 ? TableBytes() : BytesOf(segments, *header);
}

// Returns the build id if it is in the first page, which is mapped as long as a module is loaded at this place. Further
// notes of the same segment may be beyond that page.
TableBytes FindBuildId(const ImageSegments& segments)
{
    for (const ElfW(Phdr)* header = segments.Begin(); header != segments.End(); ++header)
    {
        TableBytes notes = BytesOf(segments, *header);
        const auto* const pageEnd = reinterpret_cast<const std::uint8_t*>(segments.ImageBegin() + kPageSize);
        if (header->p_type != PT_NOTE || notes.begin >= pageEnd)
            continue;
        notes.end = std::min(notes.end, pageEnd);
        for (TableReader reader(notes); reader.Left() >= sizeof(ElfW(Nhdr));)
        {
            const auto nameSize = reader.Read<std::uint32_t>();
            const auto size = reader.Read<std::uint32_t>();
            const auto type = reader.Read<std::uint32_t>();
            const TableBytes name = reader.Take((std::uint64_t{nameSize} + 3) / 4 * 4);
            const TableBytes contents = reader.Take((std::uint64_t{size} + 3) / 4 * 4);
            if (!reader.HasFailed() && type == NT_GNU_BUILD_ID && nameSize == 4 &&
                std::memcmp(name.begin, "GNU", 4) == 0)
                return {contents.begin, contents.begin + size};
        }
    }
    return {};
}

} // namespace

bool FindModuleTables(std::uintptr_t address, ModuleTables& tables)
{
    dl_find_object object;
    if (_dl_find_object(reinterpret_cast<void*>(address), &object) != 0)
        return false;
    tables.begin = reinterpret_cast<std::uintptr_t>(object.dlfo_map_start);
    tables.end = reinterpret_cast<std::uintptr_t>(object.dlfo_map_end);
    tables.table = {};
    tables.buildId = nullptr;
    tables.buildIdSize = 0;
    if (object.dlfo_eh_frame == nullptr)
        return true;
    const ImageSegments segments(tables.begin, tables.end);
    const auto* const index = static_cast<const std::uint8_t*>(object.dlfo_eh_frame);
    tables.table.index = SegmentAround(segments, index);
    if (tables.table.index.begin == nullptr)
        return true;
    tables.table.index.begin = index;
    tables.table.frames = SegmentAround(segments, FramesOf(tables.table.index));
    const TableBytes buildId = FindBuildId(segments);
    constexpr std::uint32_t kMostOfId = 16; // enough to tell modules apart
    if (buildId.Size() >= 8)
    {
        tables.buildId = buildId.begin;
        tables.buildIdSize = std::min(static_cast<std::uint32_t>(buildId.Size()), kMostOfId);
    }
    else if (segments.IsProgram())
        tables.buildId = index; // nothing else can be loaded at the place of the program
    return true;
}

} // namespace qxplatform
