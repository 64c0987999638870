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

// The names of keys from the root of the tree down.
using KeyPath = std::vector<std::u16string>;

// Appends the names of `text`, which backslashes divide, to the path. Gives the code of the failure for a text that
// names no key.
LSTATUS AppendNames(KeyPath& path, std::u16string_view text);

// Names are the same that differ in case alone.
std::u16string FoldName(std::u16string_view name);

// Lines of text that stood in front of something in the file, as people write them there.
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
    std::map<std::u16string, RegistryValue> values; // by folded name, the unnamed one first
    std::map<std::u16string, std::unique_ptr<RegistryKey>> keys;
    CommentLines comments;

    RegistryKey* Find(const KeyPath& path);
    const RegistryKey* Find(const KeyPath& path) const { return const_cast<RegistryKey*>(this)->Find(path); }

    // Makes what is missing of the path.
    RegistryKey& Ensure(const KeyPath& path);

    const RegistryValue* FindValue(std::u16string_view valueName) const;

    // An existing value keeps its comments and the case of its name.
    RegistryValue& EnsureValue(std::u16string_view valueName);
};

struct RegistryTree
{
    RegistryKey root;
    CommentLines comments; // behind all else
};

} // namespace qxplatform
