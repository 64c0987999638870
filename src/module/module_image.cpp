#include "module/module_image.h"

#include <cstddef>
#include <cstring>
#include <optional>

namespace qx
{
namespace
{

// Offsets in an image in the Portable Executable format. Relative to the DOS header:
constexpr std::size_t kPlaceOfNewHeader = 0x3C;
// Relative to the PE signature:
constexpr std::size_t kSectionCount = 6;
constexpr std::size_t kLinkTime = 8;
constexpr std::size_t kOptionalHeaderSize = 20;
constexpr std::size_t kOptionalHeader = 24;
// Relative to the optional header, which has a 64-bit and a 32-bit form:
constexpr std::size_t kImageSize = 56;
constexpr std::size_t kResourceEntry64 = 112 + 2 * 8;
constexpr std::size_t kResourceEntry32 = 96 + 2 * 8;
constexpr std::uint16_t kMagic64 = 0x20B;
// Relative to a section header:
constexpr std::size_t kSectionSize = 40;
constexpr std::size_t kSectionAddress = 12;

// The headers of a loaded image start in its first page. Headers that extend beyond the first page aren't supported
// here; the caller then gets the information from the system.
constexpr std::size_t kFirstPage = 0x1000;

struct ResourceDirectory
{
    std::uint32_t characteristics;
    std::uint32_t time;
    std::uint32_t version;
    std::uint16_t namedEntries;
    std::uint16_t numberedEntries;
};

struct ResourceEntry
{
    std::uint32_t name;
    std::uint32_t place; // offset from the start of the resources

    bool IsDirectory() const { return (place & kDirectoryFlag) != 0; }
    std::uint32_t Place() const { return place & ~kDirectoryFlag; }

    static constexpr std::uint32_t kDirectoryFlag = 0x80000000;
};

struct ResourceData
{
    std::uint32_t address;
    std::uint32_t size;
};

class ModuleImage
{
public:
    explicit ModuleImage(HMODULE module) : _begin(reinterpret_cast<const std::byte*>(module))
    {
        std::uint32_t place = 0;
        std::uint32_t size = 0;
        if (!_begin || std::memcmp(_begin, "MZ", 2) != 0 || !Read(kPlaceOfNewHeader, place) ||
            place > _size - kOptionalHeader || std::memcmp(_begin + place, "PE\0", 4) != 0 ||
            !Read(place + kOptionalHeader + kImageSize, size))
            return;
        _header = place;
        _size = size;
    }

    bool IsThere() const { return _header != 0; }

    template <class Value>
    bool Read(std::size_t place, Value& value) const
    {
        if (place > _size || sizeof value > _size - place)
            return false;
        std::memcpy(&value, _begin + place, sizeof value);
        return true;
    }

    std::uint32_t LinkTime() const
    {
        std::uint32_t time = 0;
        Read(_header + kLinkTime, time);
        return time;
    }

    // Returns the offset of the resources, or 0 if there are none. A ".rsrc" section takes precedence over the
    // directory entry.
    std::uint32_t Resources() const
    {
        std::uint16_t magic = 0;
        std::uint32_t place = 0;
        Read(_header + kOptionalHeader, magic);
        Read(_header + kOptionalHeader + (magic == kMagic64 ? kResourceEntry64 : kResourceEntry32), place);
        std::uint16_t count = 0;
        std::uint16_t skipped = 0;
        Read(_header + kSectionCount, count);
        Read(_header + kOptionalHeaderSize, skipped);
        std::size_t section = _header + kOptionalHeader + skipped;
        for (; count > 0; --count, section += kSectionSize)
        {
            char name[8] = {};
            if (Read(section, name) && std::strncmp(name, ".rsrc", sizeof name) == 0)
                Read(section + kSectionAddress, place);
        }
        return place;
    }

    const void* At(const ResourceData& data) const
    {
        return data.address <= _size && data.size <= _size - data.address ? _begin + data.address : nullptr;
    }

private:
    const std::byte* _begin;
    std::size_t _header = 0;
    std::size_t _size = kFirstPage; // until the image's own size is read
};

// A directory of the three-level resource tree.
class Directory
{
public:
    Directory(const ModuleImage& image, std::size_t resources, std::size_t place)
        : _image(image),
          _resources(resources),
          _entries(resources + place + sizeof(ResourceDirectory))
    {
        if (!image.Read(resources + place, _head))
            _head = {};
    }

    unsigned NumberedCount() const { return _head.numberedEntries; }
    unsigned Count() const { return _head.namedEntries + NumberedCount(); }

    std::optional<ResourceEntry> Entry(unsigned index) const
    {
        ResourceEntry entry;
        return _image.Read(_entries + index * sizeof entry, entry) ? std::optional(entry) : std::nullopt;
    }

    // Returns the subdirectory of a numbered entry. Named entries precede the numbered ones.
    std::optional<Directory> Below(std::uint32_t number) const
    {
        for (unsigned i = _head.namedEntries; i < Count(); ++i)
        {
            const auto entry = Entry(i);
            if (!entry || (entry->name == number && !entry->IsDirectory()))
                break;
            if (entry->name == number)
                return Directory(_image, _resources, entry->Place());
        }
        return std::nullopt;
    }

private:
    const ModuleImage& _image;
    std::size_t _resources;
    std::size_t _entries;
    ResourceDirectory _head = {};
};

constexpr std::uint32_t kVersionType = 16;
constexpr std::uint32_t kVersionNumber = 1;

// Returns the directory of the version block's languages.
std::optional<Directory> Languages(const ModuleImage& image, std::uint32_t resources)
{
    const auto names = Directory(image, resources, 0).Below(kVersionType);
    return names && names->NumberedCount() == 1 ? names->Below(kVersionNumber) : std::nullopt;
}

} // namespace

const void* FindVersionBlock(HMODULE module)
{
    const ModuleImage image(module);
    const std::uint32_t resources = image.IsThere() ? image.Resources() : 0;
    const auto languages = resources != 0 ? Languages(image, resources) : std::nullopt;
    const void* block = nullptr;
    for (unsigned i = 0; languages && i < languages->Count(); ++i)
    {
        const auto entry = languages->Entry(i);
        ResourceData data;
        std::uint16_t told = 0; // the length in the block's first word, on which its readers rely
        if (entry && !entry->IsDirectory() && image.Read(resources + std::size_t{entry->Place()}, data) &&
            image.At(data) != nullptr && image.Read(data.address, told) && told <= data.size)
            block = image.At(data); // if there are several languages, the last one is used
    }
    return block;
}

std::uint32_t LinkTimeOf(HMODULE module)
{
    const ModuleImage image(module);
    return image.IsThere() ? image.LinkTime() : 0;
}

} // namespace qx
