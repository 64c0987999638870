#include "files/utf_type.h"

#include <windows.h>

#include <algorithm>
#include <bit>
#include <climits>
#include <cstdint>

namespace qx
{

namespace
{

constexpr int kUnicodeTests =
    IS_TEXT_UNICODE_ASCII16 | IS_TEXT_UNICODE_STATISTICS | IS_TEXT_UNICODE_CONTROLS | IS_TEXT_UNICODE_SIGNATURE;
constexpr int kReversedUnicodeTests = IS_TEXT_UNICODE_REVERSE_ASCII16 | IS_TEXT_UNICODE_REVERSE_STATISTICS |
                                      IS_TEXT_UNICODE_REVERSE_CONTROLS | IS_TEXT_UNICODE_REVERSE_SIGNATURE;
static_assert(kUnicodeTests == 15 && kReversedUnicodeTests == 240);

// Returns the length of the UTF-8 sequence at `bytes`. Returns 0 if there is no valid sequence or it takes more than
// three bytes, because such sequences encode characters above U+FFFF. The terminating zero ends the look-ahead, because
// it is not a continuation byte.
unsigned SequenceLength(const std::uint8_t* bytes)
{
    const auto length = static_cast<unsigned>(std::countl_one(bytes[0]));
    if (length == 0)
    {
        return 1;
    }
    if (length == 1 || length > 3)
    {
        return 0;
    }
    const unsigned continuations = length - 1;
    std::uint32_t value = bytes[0] & (63U >> continuations);
    for (unsigned i = 1; i <= continuations; ++i)
    {
        if ((bytes[i] & 0xC0) != 0x80)
        {
            return 0;
        }
        value = (value << 6) | (bytes[i] & 0x3FU);
    }
    return value > (length == 2 ? 0x7FU : 0x7FFU) ? length : 0;
}

bool IsUTF8(const std::uint8_t* bytes)
{
    while (*bytes != 0)
    {
        const unsigned length = SequenceLength(bytes);
        if (length == 0)
        {
            return false;
        }
        bytes += length;
    }
    return true;
}

// Returns true if the system's tests recognise the text. The system takes the count as an int; the head of a larger
// text is sufficient.
bool PassesSystemTests(const std::uint8_t* bytes, std::size_t count, int tests)
{
    return IsTextUnicode(bytes, static_cast<int>(std::min<std::size_t>(count, INT_MAX)), &tests) != FALSE;
}

} // namespace

scByteOrderMark FindByteOrderMark(const std::uint8_t* bytes, std::size_t count)
{
    if (count >= 3 && bytes[0] == 0xEF && bytes[1] == 0xBB && bytes[2] == 0xBF)
    {
        return {UTFType::UTF8, 3};
    }
    if (count >= 2 && bytes[0] == 0xFF && bytes[1] == 0xFE)
    {
        return {UTFType::UTF16LE, 2};
    }
    if (count >= 2 && bytes[0] == 0xFE && bytes[1] == 0xFF)
    {
        return {UTFType::UTF16BE, 2};
    }
    return {UTFType::Unknown, 0};
}

UTFType GuessByZeroByte(const std::uint8_t* bytes, std::size_t count)
{
    if (count < 2 || (bytes[0] == 0) == (bytes[1] == 0))
    {
        return UTFType::Unknown;
    }
    return bytes[0] == 0 ? UTFType::UTF16BE : UTFType::UTF16LE;
}

UTFType GuessByContent(const std::uint8_t* bytes, std::size_t count)
{
    if (IsUTF8(bytes))
    {
        return UTFType::UTF8;
    }
    if (PassesSystemTests(bytes, count, kUnicodeTests))
    {
        return UTFType::UTF16LE;
    }
    return PassesSystemTests(bytes, count, kReversedUnicodeTests) ? UTFType::UTF16BE : UTFType::Unknown;
}

} // namespace qx
