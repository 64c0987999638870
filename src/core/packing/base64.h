// Base64 of RFC 4648, section 4, in wide characters: the writer adds no line breaks, the readers are lenient.
//
// A reader takes groups of four symbols (letters, digits, "+", "/" and "="), passes over every other character, and
// takes "=" and the end of the text as the value 0. Characters in front of a group that are no symbols are passed over
// before the group's count of valid bytes is told, and reading ends when only such characters are left.
#pragma once

#include "core/packing/byte_block.h"
#include "core/text/string.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace qx
{

// Characters that `size` bytes take.
constexpr std::size_t Base64Length(std::size_t size)
{
    return (size + 2) / 3 * 4;
}

// Room that is enough for the bytes of any text of `length` characters.
constexpr std::size_t Base64RoomForBytes(std::size_t length)
{
    return (length / 4 + 1) * 3;
}

// The count of valid bytes of a text that has nothing but whole groups of symbols. Any other has no more than that, but
// for one or two bytes where it ends inside a group.
std::size_t Base64MostBytes(std::wstring_view text);

// Writes `Base64Length(size)` characters to `text`, without a terminator.
void Base64EncodeTo(wchar_t* text, const void* data, std::size_t size);

String Base64Encode(const void* data, std::size_t size);

// What the last group of a text gives.
enum class Base64Tail
{
    ByPadding, // as many bytes as its padding says
    Whole      // always three bytes
};

struct Base64Decoded
{
    std::size_t size = 0; // valid bytes
    bool cut = false;     // the room was full while text was left
};

// Decodes into `bytes`, which has room for `room` bytes. Whole groups are written, but for the last one where the room
// ends inside it.
Base64Decoded Base64DecodeTo(unsigned char* bytes, std::size_t room, std::wstring_view text, Base64Tail tail);

// Decodes into a new block that `holder` gets; the result is the count of valid bytes, which is also the block's size.
std::size_t Base64DecodeToBytes(const String& text, ByteBlock& holder);

// Decodes to text in a code page (0: each byte is the character of the same value). The text ends at the first zero
// byte, so padding stays out of it.
String Base64DecodeToText(const String& text, std::uint32_t codePage);

} // namespace qx
