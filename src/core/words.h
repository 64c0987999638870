// Reads numbers from the bytes of a file.
#pragma once

#include <cstdint>

namespace qx
{

constexpr std::uint16_t LittleEndian16(const std::uint8_t* at)
{
    return static_cast<std::uint16_t>(at[0] | at[1] << 8);
}

constexpr std::uint32_t LittleEndian32(const std::uint8_t* at)
{
    return LittleEndian16(at) | static_cast<std::uint32_t>(LittleEndian16(at + 2)) << 16;
}

constexpr std::uint16_t BigEndian16(const std::uint8_t* at)
{
    return static_cast<std::uint16_t>(at[0] << 8 | at[1]);
}

constexpr std::uint32_t BigEndian32(const std::uint8_t* at)
{
    return static_cast<std::uint32_t>(BigEndian16(at)) << 16 | BigEndian16(at + 2);
}

} // namespace qx
