#include "resources/resource_image.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <tuple>

#include "base/text.h"

namespace qxplatform
{

namespace
{

constexpr WORD kNumberFollows = 0xffff;
constexpr std::size_t kAlignment = 4;

std::u16string UpperCaseOf(std::u16string_view text)
{
    std::u16string upper(text);
    std::transform(upper.begin(), upper.end(), upper.begin(), UpperCase);
    return upper;
}

// Reads numbers and keys from a part of the image. Returns nothing if the data ends too early.
class Reader
{
public:
    explicit Reader(std::span<const std::byte> bytes) : _bytes(bytes) {}

    template <class Number>
    std::optional<Number> Read()
    {
        if (_bytes.size() - _position < sizeof(Number))
            return std::nullopt;
        Number number;
        std::memcpy(&number, _bytes.data() + _position, sizeof number);
        _position += sizeof number;
        return number;
    }

    std::optional<ResourceKey> ReadKey()
    {
        ResourceKey key;
        std::optional<WORD> unit = Read<WORD>();
        if (unit == kNumberFollows)
        {
            const std::optional<WORD> number = Read<WORD>();
            if (!number)
                return std::nullopt;
            key.number = *number;
            return key;
        }
        for (; unit && *unit != 0; unit = Read<WORD>())
            key.text += UpperCase(static_cast<char16_t>(*unit));
        return unit && !key.text.empty() ? std::optional(key) : std::nullopt;
    }

    void Align() { _position = std::min((_position + kAlignment - 1) / kAlignment * kAlignment, _bytes.size()); }

private:
    std::span<const std::byte> _bytes;
    std::size_t _position = 0;
};

// Parses the header of a resource from its type on.
std::optional<Resource> ReadHeader(std::span<const std::byte> header)
{
    Reader reader(header);
    const std::optional<ResourceKey> type = reader.ReadKey();
    const std::optional<ResourceKey> name = type ? reader.ReadKey() : std::nullopt;
    if (!name)
        return std::nullopt;
    reader.Align();
    const std::optional<DWORD> dataVersion = reader.Read<DWORD>();
    const std::optional<WORD> memoryFlags = reader.Read<WORD>();
    const std::optional<WORD> language = reader.Read<WORD>();
    if (!dataVersion || !memoryFlags || !language)
        return std::nullopt;
    return Resource{*type, *name, *language};
}

bool LessByPlace(const Resource& a, const Resource& b)
{
    return std::tie(a.type, a.name, a.language) < std::tie(b.type, b.name, b.language);
}

// Returns true for the first entry of a file, which is empty and only marks a 32-bit resource file.
bool IsFileMark(const Resource& resource)
{
    return resource.type.IsNumber() && resource.type.number == 0;
}

template <class IsLess>
std::span<const Resource> Range(std::span<const Resource> resources, const Resource& wanted, IsLess isLess)
{
    const auto [begin, end] = std::equal_range(resources.begin(), resources.end(), wanted, isLess);
    return resources.subspan(
        static_cast<std::size_t>(begin - resources.begin()), static_cast<std::size_t>(end - begin));
}

} // namespace

ResourceKey ResourceKey::FromCaller(LPCWSTR key)
{
    const auto value = reinterpret_cast<UINT_PTR>(key);
    if (value <= 0xffff)
        return {{}, static_cast<WORD>(value)};
    const std::u16string_view text = View(key);
    if (text.empty() || text[0] != u'#')
        return {UpperCaseOf(text), 0};
    unsigned number = 0;
    for (const char16_t digit : text.substr(1))
    {
        if (digit < u'0' || digit > u'9' || number > 0xffff)
            break;
        number = number * 10 + (digit - u'0');
    }
    return {{}, static_cast<WORD>(number)};
}

LPCWSTR ResourceKey::ToCaller() const
{
    return IsNumber() ? reinterpret_cast<LPCWSTR>(UINT_PTR{number}) : Wide(text);
}

bool operator==(const ResourceKey& a, const ResourceKey& b)
{
    return a.text == b.text && a.number == b.number;
}

bool operator<(const ResourceKey& a, const ResourceKey& b)
{
    if (a.IsNumber() != b.IsNumber())
        return b.IsNumber();
    return std::tie(a.text, a.number) < std::tie(b.text, b.number);
}

ResourceImage::ResourceImage(std::span<const std::span<const std::byte>> files)
{
    for (const std::span<const std::byte> file : files)
        Add(file);
    std::stable_sort(_resources.begin(), _resources.end(), LessByPlace);
}

void ResourceImage::Add(std::span<const std::byte> file)
{
    while (!file.empty())
    {
        Reader reader(file);
        const std::optional<DWORD> dataSize = reader.Read<DWORD>();
        const std::optional<DWORD> headerSize = reader.Read<DWORD>();
        constexpr std::size_t kSizes = 2 * sizeof(DWORD);
        if (!headerSize || *headerSize < kSizes || *headerSize > file.size() || *dataSize > file.size() - *headerSize)
            return;
        std::optional<Resource> resource = ReadHeader(file.subspan(kSizes, *headerSize - kSizes));
        if (!resource)
            return;
        resource->header = file.data();
        resource->data = file.subspan(*headerSize, *dataSize);
        if (!IsFileMark(*resource))
            _resources.push_back(std::move(*resource));
        const std::size_t whole = (std::size_t{*headerSize} + *dataSize + kAlignment - 1) / kAlignment * kAlignment;
        file = file.subspan(std::min(whole, file.size()));
    }
}

std::span<const Resource> ResourceImage::OfType(const ResourceKey& type) const
{
    return Range(_resources, Resource{type}, [](const Resource& a, const Resource& b) { return a.type < b.type; });
}

std::span<const Resource> ResourceImage::OfName(const ResourceKey& type, const ResourceKey& name) const
{
    return Range(
        OfType(type), Resource{type, name}, [](const Resource& a, const Resource& b) { return a.name < b.name; });
}

} // namespace qxplatform
