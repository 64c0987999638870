// Compiled resource files (.res): sequences of resources, each preceded by a header with type, name and language.
#pragma once

#include <minwindef.h>

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace qxplatform
{

// A type or name: a number, or a text compared without regard to case.
struct ResourceKey
{
    // Interprets a caller's pointer like the system: a number in place of the pointer, a text "#number", or a text.
    static ResourceKey FromCaller(LPCWSTR key);

    bool IsNumber() const { return text.empty(); }
    LPCWSTR ToCaller() const;

    std::u16string text;
    WORD number = 0;
};

bool operator==(const ResourceKey& a, const ResourceKey& b);

// Texts precede numbers, each in its own order, as in a system image.
bool operator<(const ResourceKey& a, const ResourceKey& b);

struct Resource
{
    ResourceKey type;
    ResourceKey name;
    LANGID language = 0;
    const std::byte* header = nullptr;
    std::span<const std::byte> data;
};

class ResourceImage
{
public:
    // Reads each file up to the first malformed part and keeps references to the data. The resources are sorted by
    // type, name and language.
    explicit ResourceImage(std::span<const std::span<const std::byte>> files);

    std::span<const Resource> All() const { return _resources; }
    std::span<const Resource> OfType(const ResourceKey& type) const;
    std::span<const Resource> OfName(const ResourceKey& type, const ResourceKey& name) const;

private:
    void Add(std::span<const std::byte> file);

    std::vector<Resource> _resources;
};

} // namespace qxplatform
