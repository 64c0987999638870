// GetFileVersionInfoW with a file of arbitrary contents: notes of an ELF file, resources, version blocks.
#include "resources/resource_image.h"
#include "resources/resource_notes.h"
#include "resources/version_block.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>

using namespace qxplatform;

namespace
{

constexpr std::u16string_view PATHS[] = {
    u"\\", u"\\VarFileInfo\\Translation", u"\\StringFileInfo\\", u"\\StringFileInfo\\040904b0\\CompanyName"};

void CheckVersionBlock(std::span<const std::byte> block)
{
    for (const std::u16string_view path : PATHS)
    {
        const auto value = FindVersionValue(block, path);
        if (value && (value->bytes < block.data() || value->bytes + value->length > block.data() + block.size()))
            std::abort();
    }
}

void CheckResources(const std::vector<std::span<const std::byte>>& files)
{
    const ResourceImage image(files);
    for (const Resource& resource : image.All())
    {
        if (image.OfName(resource.type, resource.name).empty())
            std::abort();
        CheckVersionBlock(resource.data);
    }
}

void CheckNotes(std::span<const std::byte> notes, std::size_t alignment)
{
    std::vector<std::span<const std::byte>> images;
    AddResourceImages(notes, alignment, images);
    CheckResources(images);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::span bytes(reinterpret_cast<const std::byte*>(data), size);
    const auto read = [bytes](std::uint64_t place, void* buffer, std::size_t count)
    {
        if (place > bytes.size() || count > bytes.size() - place)
            return false;
        if (count > 0)
            std::memcpy(buffer, bytes.data() + place, count);
        return true;
    };
    for (const NoteSegment& segment : ReadNoteSegments(read))
        CheckNotes(segment.bytes, segment.alignment);
    CheckNotes(bytes, 4);
    CheckResources({bytes});
    CheckVersionBlock(bytes);
    return 0;
}
