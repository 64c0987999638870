// Base64 (RFC 4648, section 4) in wide characters. The encoder adds no line breaks; the decoders are lenient.
//
// A decoder reads groups of four symbols (letters, digits, "+", "/" and "="). It skips every other character and treats
// "=" and the end of the text as the value 0. The padding of a group is recognised only if no other characters
// interrupt the group. Decoding ends when no symbols are left.
#pragma once

#include "core/packing/byte_block.h"
#include "core/text/string.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace qx
{

// Returns the number of characters for `size` bytes.
constexpr std::size_t Base64Length(std::size_t size)
{
    return (size + 2) / 3 * 4;
}

// Returns a buffer size that is sufficient for the bytes of any text of `length` characters.
constexpr std::size_t Base64RoomForBytes(std::size_t length)
{
    return (length / 4 + 1) * 3;
}

// Returns the exact number of bytes for a text that consists only of whole groups of symbols. For any other text this
// is an upper bound, except that a text that ends inside a group may have one or two bytes more.
std::size_t Base64MostBytes(std::wstring_view text);

// Writes `Base64Length(size)` characters to `text`, without a terminator.
void Base64EncodeTo(wchar_t* text, const void* data, std::size_t size);

String Base64Encode(const void* data, std::size_t size);

// How many bytes the last group of a text produces.
enum class Base64Tail
{
    ByPadding, // as many as its padding indicates
    Whole      // always three
};

struct Base64Decoded
{
    std::size_t size = 0; // number of valid bytes
    bool cut = false;     // the buffer was full before the text ended
};

// Decodes into the buffer `bytes` of `room` bytes. Writes whole groups, except for the last group if the buffer ends
// inside it.
Base64Decoded Base64DecodeTo(unsigned char* bytes, std::size_t room, std::wstring_view text, Base64Tail tail);

// Decodes into a new block, which is stored in `holder`. Returns the number of valid bytes, which is also the size of
// the block.
std::size_t Base64DecodeToBytes(const String& text, ByteBlock& holder);

// Decodes to text in a code page (0: each byte becomes the character of the same value). The text ends at the first
// zero byte, which excludes the zero bytes of padding.
String Base64DecodeToText(const String& text, std::uint32_t codePage);

} // namespace qx
