// Version resources: a tree of nodes with a key, a value and children.
#pragma once

#include <minwindef.h>

#include <cstddef>
#include <optional>
#include <span>
#include <string_view>

namespace qxplatform
{

struct VersionValue
{
    const std::byte* bytes;
    UINT length; // in characters for texts, otherwise in bytes
};

// Returns the node with the given path of keys, separated by backslashes and compared without regard to case. Empty
// components are ignored, so the root is "\". Never reads outside `block`. For a node without a value, returns the
// position of its children.
std::optional<VersionValue> FindVersionValue(std::span<const std::byte> block, std::u16string_view path);

// Returns the length stored in the root, limited to `size`.
std::size_t VersionBlockSize(const void* block, std::size_t size);

} // namespace qxplatform
