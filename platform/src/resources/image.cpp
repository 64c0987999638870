#include "resources/image.h"

#include "base/text.h"
#include "modules/loaded_modules.h"

#include <cstdint>
#include <cstring>

#include <link.h>

namespace qxplatform
{
namespace
{

constexpr char noteName[] = "QXRES";
constexpr WORD numberMark = 0xFFFF;

std::size_t Aligned(std::size_t offset, std::size_t alignment)
{
    return (offset + alignment - 1) / alignment * alignment;
}

// Reads the fields of one header, never behind its end.
class FieldReader
{
public:
    FieldReader(const std::byte* at, const std::byte* end) : _at(at), _end(end) {}

    bool HasFailed() const { return _failed; }

    template <class Field>
    Field Read()
    {
        Field field{};
        if (static_cast<std::size_t>(_end - _at) < sizeof(field))
            _failed = true;
        else
        {
            std::memcpy(&field, _at, sizeof(field));
            _at += sizeof(field);
        }
        return field;
    }

    ResourceName ReadName()
    {
        ResourceName name;
        const std::byte* begin = _at;
        char16_t character = Read<char16_t>();
        if (character == numberMark)
        {
            name.number = Read<WORD>();
            return name;
        }
        while (character != 0 && !_failed)
            character = Read<char16_t>();
        if (!_failed)
            name.text = {reinterpret_cast<const char16_t*>(begin), static_cast<std::size_t>(_at - begin) / 2 - 1};
        return name;
    }

    void Align(const std::byte* from)
    {
        const auto offset = static_cast<std::size_t>(_at - from);
        if (Aligned(offset, 4) > static_cast<std::size_t>(_end - from))
            _failed = true;
        else
            _at = from + Aligned(offset, 4);
    }

private:
    const std::byte* _at;
    const std::byte* _end;
    bool _failed = false;
};

struct Search
{
    HMODULE module;
    std::vector<Resource> found;
};

void AddImage(const std::byte* at, const std::byte* end, std::vector<Resource>& found)
{
    while (const std::optional<Resource> resource = ReadResource(at, end))
    {
        // Each file begins with an empty entry, which marks the format.
        if (resource->size > 0)
            found.push_back(*resource);
    }
}

void AddNotes(const std::byte* at, const std::byte* end, std::size_t alignment, std::vector<Resource>& found)
{
    while (static_cast<std::size_t>(end - at) >= sizeof(ElfW(Nhdr)))
    {
        ElfW(Nhdr) note;
        std::memcpy(&note, at, sizeof(note));
        const std::size_t data = sizeof(note) + Aligned(note.n_namesz, alignment);
        const std::size_t next = Aligned(data + note.n_descsz, alignment);
        if (next > static_cast<std::size_t>(end - at))
            return;
        if (note.n_namesz == sizeof(noteName) && std::memcmp(at + sizeof(note), noteName, sizeof(noteName)) == 0)
            AddImage(at + data, at + data + note.n_descsz, found);
        at += next;
    }
}

int VisitModule(dl_phdr_info* info, std::size_t, void* context)
{
    auto& search = *static_cast<Search*>(context);
    bool isSought = false;
    for (int i = 0; i < info->dlpi_phnum && !isSought; ++i)
    {
        const ElfW(Phdr)& header = info->dlpi_phdr[i];
        isSought = header.p_type == PT_LOAD && header.p_offset == 0 &&
                   reinterpret_cast<HMODULE>(info->dlpi_addr + header.p_vaddr) == search.module;
    }
    if (!isSought)
        return 0;
    for (int i = 0; i < info->dlpi_phnum; ++i)
    {
        const ElfW(Phdr)& header = info->dlpi_phdr[i];
        if (header.p_type != PT_NOTE)
            continue;
        const auto* at = reinterpret_cast<const std::byte*>(info->dlpi_addr + header.p_vaddr);
        AddNotes(at, at + header.p_memsz, header.p_align == 8 ? 8 : 4, search.found);
    }
    return 1;
}

} // namespace

ResourceName ResourceName::Of(LPCWSTR name)
{
    ResourceName result;
    const auto value = reinterpret_cast<std::uintptr_t>(name);
    if (value <= 0xFFFF)
    {
        result.number = static_cast<WORD>(value);
        return result;
    }
    result.text = View(name);
    if (result.text.size() > 1 && result.text[0] == u'#')
    {
        unsigned number = 0;
        for (const char16_t digit : result.text.substr(1))
        {
            if (digit < u'0' || digit > u'9' || number > 0xFFFF)
                return result;
            number = number * 10 + (digit - u'0');
        }
        if (number <= 0xFFFF)
            result = ResourceName{static_cast<WORD>(number), {}};
    }
    return result;
}

bool operator==(const ResourceName& a, const ResourceName& b)
{
    if (a.text.empty() || b.text.empty())
        return a.text.empty() && b.text.empty() && a.number == b.number;
    return EqualWithoutCase(a.text, b.text);
}

std::optional<Resource> ReadResource(const std::byte*& at, const std::byte* end)
{
    // Sizes of data and header; type, name; padding; version of the data, memory flags, language, version,
    // characteristics.
    FieldReader fields(at, end);
    Resource resource;
    resource.entry = at;
    resource.size = fields.Read<DWORD>();
    const auto headerSize = fields.Read<DWORD>();
    resource.type = fields.ReadName();
    resource.name = fields.ReadName();
    fields.Align(at);
    fields.Read<DWORD>();
    fields.Read<WORD>();
    resource.language = fields.Read<WORD>();
    const auto left = static_cast<std::size_t>(end - at);
    if (fields.HasFailed() || headerSize > left || resource.size > left - headerSize)
        return std::nullopt;
    resource.data = at + headerSize;
    const std::size_t whole = Aligned(headerSize + std::size_t{resource.size}, 4);
    at = whole < left ? at + whole : end;
    return resource;
}

std::vector<Resource> ResourcesOf(HMODULE module)
{
    const std::optional<Module> loaded = ModuleOf(module);
    if (!loaded)
        return {};
    Search search{loaded->handle, {}};
    dl_iterate_phdr(&VisitModule, &search);
    return std::move(search.found);
}

} // namespace qxplatform
