// A version resource: a tree of nodes with a key, a value and children.
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
    UINT length; // in characters for texts, else in bytes
};

// The node at a path of keys divided by backslashes, compared without regard to case; empty parts count for nothing, so
// the root is at "\". Nothing outside `block` is read. A node without a value gives where its children begin.
std::optional<VersionValue> FindVersionValue(std::span<const std::byte> block, std::u16string_view path);

// The length that the root tells, at most `size`.
std::size_t VersionBlockSize(const void* block, std::size_t size);

} // namespace qxplatform
