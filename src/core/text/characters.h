// Copying of characters. The standard library's wide functions are compiled for 32-bit characters on linux.
#pragma once

#include <cstddef>
#include <cstring>
#include <string_view>

namespace qx
{

// The ranges may overlap.
inline void MoveCharacters(wchar_t* to, const wchar_t* from, std::size_t count)
{
    std::memmove(to, from, count * sizeof(wchar_t));
}

// The ranges must not overlap. Returns the position after the copy.
inline wchar_t* CopyCharacters(wchar_t* to, std::wstring_view text)
{
    if (!text.empty()) // an empty view may have no data
        std::memcpy(to, text.data(), text.size() * sizeof(wchar_t));
    return to + text.size();
}

} // namespace qx
