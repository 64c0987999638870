// Reads the target of a shortcut from the shortcut's file ([MS-SHLLINK]).
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace qxplatform
{

// The two forms of a target's path; empty if the file doesn't have the form.
struct LinkTarget
{
    std::u16string local; // on a drive: Q:\folder\name
    std::u16string share; // \\server\share\folder\name
};

// Files are read up to this size. The header and the list of item identifiers have less than 65 KB, and paths at most
// 32,767 characters.
constexpr std::size_t kMostLinkBytes = 1024 * 1024;

// Reads the header and the block about the link's target. Returns nothing if the bytes are not a shortcut. The target
// of a shortcut without that block, or with a damaged one, is empty.
std::optional<LinkTarget> ParseLink(std::span<const std::uint8_t> file);

} // namespace qxplatform
