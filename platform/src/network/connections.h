// Drives that are connected to a share: links of the layer's folder `dosdevices` such as `q:`, which are relative and
// lead to `unc/server/share`. A connection exists whether or not the share can be reached.
#pragma once

#include <minwindef.h>

#include <optional>
#include <string>
#include <vector>

namespace qxplatform
{

struct Connection
{
    std::u16string drive; // Q:
    std::u16string share; // \\server\share
};

// Returns the connection of a drive, given by its letter in either case. Z: has none, because it is the file system.
std::optional<Connection> ConnectionOf(char16_t letter);

// Returns all connections in the order of the letters.
std::vector<Connection> Connections();

// Copies the text and a terminator, and advances the target past both. The memory need not be aligned.
LPWSTR PutText(BYTE*& target, const std::u16string& text);

// Returns the number of bytes that PutText fills.
inline std::size_t SizeOfText(const std::u16string& text)
{
    return (text.size() + 1) * sizeof(char16_t);
}

} // namespace qxplatform
