#include "stack/module_tables.h"

#include <algorithm>
#include <cstring>

#include <dlfcn.h>
#include <elf.h>
#include <link.h>

namespace qxplatform
{
namespace
{

// The headers of a module's segments, which are in its first page.
class Segments
{
public:
    explicit Segments(std::uintptr_t begin, std::uintptr_t end) : _begin(begin), _end(end)
    {
        const auto& head = *reinterpret_cast<const ElfW(Ehdr)*>(begin);
        constexpr std::size_t kPage = 4096;
        if (std::memcmp(head.e_ident, ELFMAG, SELFMAG) != 0 || head.e_phentsize != sizeof(ElfW(Phdr)) ||
            head.e_phoff > kPage || head.e_phnum > (kPage - head.e_phoff) / sizeof(ElfW(Phdr)))
            return;
        _headers = reinterpret_cast<const ElfW(Phdr)*>(begin + head.e_phoff);
        _count = head.e_phnum;
        const ElfW(Phdr)* const first = std::find_if(
            _headers, _headers + _count, [](const ElfW(Phdr) & header) { return header.p_type == PT_LOAD; });
        if (first != _headers + _count)
            _bias = begin - first->p_vaddr / kPage * kPage;
        else
            _count = 0;
    }

    // Returns the readable memory from an address to the end of its segment.
    TableBytes From(std::uintptr_t address) const
    {
        for (unsigned index = 0; index < _count; ++index)
        {
            const TableBytes bytes = BytesOf(_headers[index]);
            const auto* const at = reinterpret_cast<const std::uint8_t*>(address);
            if (_headers[index].p_type == PT_LOAD && (_headers[index].p_flags & PF_R) != 0 && bytes.Contains(at))
                return {at, bytes.end};
        }
        return {};
    }

    // Returns the whole readable segment that contains an address.
    TableBytes Around(std::uintptr_t address) const
    {
        for (unsigned index = 0; index < _count; ++index)
        {
            const TableBytes bytes = BytesOf(_headers[index]);
            if (_headers[index].p_type == PT_LOAD && (_headers[index].p_flags & PF_R) != 0 &&
                bytes.Contains(reinterpret_cast<const std::uint8_t*>(address)))
                return bytes;
        }
        return {};
    }

    // Returns the build id if it is in the first page, which is mapped as long as a module is loaded at this place.
    TableBytes BuildId() const
    {
        constexpr std::uintptr_t kPage = 4096;
        for (unsigned index = 0; index < _count; ++index)
        {
            const TableBytes bytes = BytesOf(_headers[index]);
            if (_headers[index].p_type != PT_NOTE || reinterpret_cast<std::uintptr_t>(bytes.end) > _begin + kPage)
                continue;
            for (TableReader reader(bytes); reader.Left() >= sizeof(ElfW(Nhdr));)
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

private:
    // Empty if the header refers to memory outside of the image.
    TableBytes BytesOf(const ElfW(Phdr) & header) const
    {
        const std::uintptr_t begin = _bias + header.p_vaddr;
        if (begin < _begin || begin > _end || header.p_memsz > _end - begin)
            return {};
        const auto* const at = reinterpret_cast<const std::uint8_t*>(begin);
        return {at, at + header.p_memsz};
    }

    std::uintptr_t _begin;
    std::uintptr_t _end;
    std::uintptr_t _bias = 0;
    const ElfW(Phdr) * _headers = nullptr;
    unsigned _count = 0;
};

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
    const Segments segments(tables.begin, tables.end);
    tables.table.index = segments.From(reinterpret_cast<std::uintptr_t>(object.dlfo_eh_frame));
    tables.table.frames = segments.Around(reinterpret_cast<std::uintptr_t>(FramesOf(tables.table.index)));
    const TableBytes buildId = segments.BuildId();
    constexpr std::uint32_t kMostOfId = 16; // enough to tell modules apart
    if (buildId.Size() >= 8)
    {
        tables.buildId = buildId.begin;
        tables.buildIdSize = std::min(static_cast<std::uint32_t>(buildId.Size()), kMostOfId);
    }
    return true;
}

} // namespace qxplatform
