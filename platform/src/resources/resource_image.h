// Compiled resource files (.res): each a row of resources, each of these behind a header with its type, name and
// language.
#pragma once

#include <minwindef.h>

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace qxplatform
{

// A type or a name: a number, or a text that is compared without regard to case.
struct ResourceKey
{
    // From a caller's pointer, as the system reads it: a number in the pointer's place, a text "#number", or a text.
    static ResourceKey FromCaller(LPCWSTR key);

    bool IsNumber() const { return text.empty(); }
    LPCWSTR ToCaller() const;

    std::u16string text;
    WORD number = 0;
};

bool operator==(const ResourceKey& a, const ResourceKey& b);

// Texts come before numbers, each in its order, as in an image of the system.
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
    // Reads each file as far as it is sound, and keeps references to it. The result is sorted by type, name, language.
    explicit ResourceImage(std::span<const std::span<const std::byte>> files);

    std::span<const Resource> All() const { return _resources; }
    std::span<const Resource> OfType(const ResourceKey& type) const;
    std::span<const Resource> OfName(const ResourceKey& type, const ResourceKey& name) const;

private:
    void Add(std::span<const std::byte> file);

    std::vector<Resource> _resources;
};

} // namespace qxplatform
