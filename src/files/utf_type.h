// Which Unicode encoding the bytes of a text have.
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
    UTFType type; // Unknown: there is none
    std::uint32_t length;
};

// The mark at the start of `bytes`, of which the first three decide.
scByteOrderMark FindByteOrderMark(const std::uint8_t* bytes, std::size_t count);

// What two first bytes without a mark tell: a zero beside a byte that isn't.
UTFType GuessByZeroByte(const std::uint8_t* bytes, std::size_t count);

// What the text as a whole tells. `bytes` has a zero at index `count`. Text that is UTF-8 up to its first zero counts
// as that, pure ASCII included; for other text the system's tests decide. Sequences above U+FFFF aren't accepted.
UTFType GuessByContent(const std::uint8_t* bytes, std::size_t count);

} // namespace qx
