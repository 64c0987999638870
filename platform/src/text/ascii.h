// Fast handling of ASCII runs, which make up most text.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace qxplatform
{

// Returns the number of bytes from `begin` on that are below 0x80.
inline std::size_t AsciiRun(const char* begin, const char* end)
{
    const char* next = begin;
    while (end - next >= 8)
    {
        std::uint64_t word;
        std::memcpy(&word, next, sizeof word);
        if ((word & 0x8080808080808080u) != 0)
            break;
        next += 8;
    }
    while (next != end && static_cast<unsigned char>(*next) < 0x80)
        ++next;
    return static_cast<std::size_t>(next - begin);
}

inline std::size_t AsciiRun(const wchar_t* begin, const wchar_t* end)
{
    const wchar_t* next = begin;
    while (end - next >= 4)
    {
        std::uint64_t word;
        std::memcpy(&word, next, sizeof word);
        if ((word & 0xff80ff80ff80ff80u) != 0)
            break;
        next += 4;
    }
    while (next != end && *next < 0x80)
        ++next;
    return static_cast<std::size_t>(next - begin);
}

inline wchar_t Widen(char byte)
{
    return static_cast<unsigned char>(byte);
}

inline char Narrow(wchar_t unit)
{
    return static_cast<char>(unit);
}

} // namespace qxplatform
