// Keys and values in memory.
#pragma once

#include <minwindef.h>

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace qxplatform
{

constexpr std::size_t kMaxKeyName = 255;
constexpr std::size_t kMaxValueName = 16383;
constexpr std::size_t kMaxKeyDepth = 512;

// The names of keys from the root of the tree downwards.
using KeyPath = std::vector<std::u16string>;

// Appends the names in `text`, separated by backslashes, to the path. Returns an error code if the text is not a valid
// key name.
LSTATUS AppendNames(KeyPath& path, std::u16string_view text);

// Returns the form by which names are compared without regard to case.
std::u16string FoldName(std::u16string_view name);

// Comment lines that precede an item in the file.
using CommentLines = std::vector<std::u16string>;

struct RegistryValue
{
    std::u16string name;
    DWORD type = 0;
    std::vector<BYTE> data;
    CommentLines comments;
};

struct RegistryKey
{
    std::u16string name;
    std::map<std::u16string, RegistryValue> values; // by folded name, the unnamed value first
    std::map<std::u16string, std::unique_ptr<RegistryKey>> keys;
    CommentLines comments;

    RegistryKey* Find(const KeyPath& path);
    const RegistryKey* Find(const KeyPath& path) const { return const_cast<RegistryKey*>(this)->Find(path); }

    // Creates the missing keys of a path.
    RegistryKey& Ensure(const KeyPath& path);

    const RegistryValue* FindValue(std::u16string_view valueName) const;

    // An existing value keeps its comments and the case of its name.
    RegistryValue& EnsureValue(std::u16string_view valueName);
};

struct RegistryTree
{
    RegistryKey root;
    CommentLines comments; // at the end of the file
};

} // namespace qxplatform
