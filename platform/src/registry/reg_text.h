// The text form of a tree: "Windows Registry Editor Version 5.00", as the system's own editor exports and imports it.
#pragma once

#include "registry/registry_tree.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace qxplatform
{

// A larger file isn't read, and a tree that would make one isn't written.
constexpr std::size_t kMaxRegistryFile = std::size_t{64} << 20;

struct RegistryText
{
    RegistryTree tree;
    // Something couldn't be understood. The tree holds the rest, and writing it would lose what isn't in it.
    bool damaged = false;
};

// Reads UTF-16LE with a mark, or UTF-8 with or without one. The keys in it stand below `rootName`. Nothing at all is
// an empty tree.
RegistryText ReadRegistryText(std::string_view bytes, std::u16string_view rootName);

// Writes UTF-16LE with a mark.
std::string WriteRegistryText(const RegistryTree& tree, std::u16string_view rootName);

} // namespace qxplatform
