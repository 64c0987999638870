// Detection of the Unicode encoding of a text.
#pragma once

#include <cstddef>
#include <cstdint>

namespace qx
{

enum class UTFType
{
    Unknown = 0, // or 8-bit
    UTF16LE = 1,
    UTF16BE = 2,
    UTF8 = 3
};

struct scByteOrderMark
{
    UTFType type; // Unknown if there is no mark
    std::uint32_t length;
};

// Finds a byte order mark at the start of `bytes`. At most three bytes are examined.
scByteOrderMark FindByteOrderMark(const std::uint8_t* bytes, std::size_t count);

// Guesses from the first two bytes of a text without a mark: exactly one zero byte means UTF-16.
UTFType GuessByZeroByte(const std::uint8_t* bytes, std::size_t count);

// Guesses from the whole text. `bytes` must have a zero at index `count`. Text that is valid UTF-8 up to its first
// zero, including pure ASCII, is UTF-8; other text is classified by the system's tests. UTF-8 sequences above U+FFFF
// aren't accepted.
UTFType GuessByContent(const std::uint8_t* bytes, std::size_t count);

} // namespace qx
