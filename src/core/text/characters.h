// Characters on their way from one place to another. The standard library's own functions are compiled for characters
// of 32 bits on linux.
#pragma once

#include <cstddef>
#include <cstring>
#include <string_view>

namespace qx
{

// The places may overlap.
inline void MoveCharacters(wchar_t* to, const wchar_t* from, std::size_t count)
{
    std::memmove(to, from, count * sizeof(wchar_t));
}

// The place behind the copy, which must not overlap the text.
inline wchar_t* CopyCharacters(wchar_t* to, std::wstring_view text)
{
    std::memcpy(to, text.data(), text.size() * sizeof(wchar_t));
    return to + text.size();
}

} // namespace qx
