// The text form of a tree, "Windows Registry Editor Version 5.00", as exported and imported by the system's registry
// editor.
#pragma once

#include "registry/registry_tree.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace qxplatform
{

// Larger files aren't read, and larger trees aren't written.
constexpr std::size_t kMaxRegistryFile = std::size_t{64} << 20;

struct RegistryText
{
    RegistryTree tree;
    // A part couldn't be parsed. The tree contains the rest; writing it would lose the missing part.
    bool damaged = false;
};

// Reads UTF-16LE with a byte order mark, or UTF-8 with or without one. The keys are relative to `rootName`. Empty input
// is an empty tree.
RegistryText ReadRegistryText(std::string_view bytes, std::u16string_view rootName);

// Writes UTF-16LE with a byte order mark.
std::string WriteRegistryText(const RegistryTree& tree, std::u16string_view rootName);

} // namespace qxplatform
