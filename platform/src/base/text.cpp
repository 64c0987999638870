#include "base/text.h"

#include <algorithm>
#include <cstdint>

#include <unicode/uchar.h>

namespace qxplatform
{
namespace
{

constexpr char32_t kFirstEscape = 0xDC80; // represents the byte 0x80
constexpr char32_t kLastEscape = 0xDCFF;

// Returns the length of the well-formed UTF-8 sequence at the beginning of the bytes, and its character; 0 if there is
// none.
std::size_t DecodeSequence(std::string_view bytes, char32_t& character)
{
    const auto byteAt = [&bytes](std::size_t index)
    {
        return static_cast<std::uint8_t>(bytes[index]);
    };
    const std::uint8_t lead = byteAt(0);
    if (lead < 0x80)
    {
        character = lead;
        return 1;
    }
    const std::size_t length = lead >= 0xF0 && lead < 0xF8 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC2 ? 2 : 0;
    if (length == 0 || lead >= 0xF8 || bytes.size() < length)
        return 0;
    character = lead & (0xFF >> (length + 1));
    for (std::size_t index = 1; index < length; ++index)
    {
        if ((byteAt(index) & 0xC0) != 0x80)
            return 0;
        character = character << 6 | (byteAt(index) & 0x3F);
    }
    constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool isSurrogate = character >= 0xD800 && character < 0xE000;
    return character < kSmallest[length] || character > 0x10FFFF || isSurrogate ? 0 : length;
}

void AppendSequence(std::string& bytes, char32_t character)
{
    const auto append = [&bytes](char32_t value)
    {
        bytes.push_back(static_cast<char>(value));
    };
    if (character < 0x80)
        return append(character);
    if (character < 0x800)
        append(0xC0 | character >> 6);
    else
    {
        if (character < 0x10000)
            append(0xE0 | character >> 12);
        else
        {
            append(0xF0 | character >> 18);
            append(0x80 | (character >> 12 & 0x3F));
        }
        append(0x80 | (character >> 6 & 0x3F));
    }
    append(0x80 | (character & 0x3F));
}

bool IsHighSurrogate(char16_t unit)
{
    return unit >= 0xD800 && unit < 0xDC00;
}

bool IsLowSurrogate(char16_t unit)
{
    return unit >= 0xDC00 && unit < 0xE000;
}

} // namespace

std::u16string ToWide(std::string_view bytes)
{
    std::u16string text;
    text.reserve(bytes.size());
    while (!bytes.empty())
    {
        char32_t character = 0;
        std::size_t length = DecodeSequence(bytes, character);
        if (length == 0)
        {
            character = kFirstEscape - 0x80 + static_cast<std::uint8_t>(bytes[0]);
            length = 1;
        }
        if (character >= 0x10000)
        {
            text.push_back(static_cast<char16_t>(0xD800 + ((character - 0x10000) >> 10)));
            character = 0xDC00 + (character & 0x3FF);
        }
        text.push_back(static_cast<char16_t>(character));
        bytes.remove_prefix(length);
    }
    return text;
}

std::string ToBytes(std::u16string_view text)
{
    std::string bytes;
    bytes.reserve(text.size());
    for (std::size_t index = 0; index < text.size(); ++index)
    {
        char32_t character = text[index];
        if (IsHighSurrogate(text[index]) && index + 1 < text.size() && IsLowSurrogate(text[index + 1]))
            character = 0x10000 + ((character - 0xD800) << 10) + (text[++index] - 0xDC00u);
        if (character >= kFirstEscape && character <= kLastEscape)
            bytes.push_back(static_cast<char>(character - kFirstEscape + 0x80));
        else
            AppendSequence(bytes, character);
    }
    return bytes;
}

DWORD CopyOut(std::u16string_view text, LPWSTR buffer, DWORD size)
{
    const DWORD length = static_cast<DWORD>(text.size());
    if (buffer == nullptr || size <= length)
        return length + 1;
    *std::copy(text.begin(), text.end(), buffer) = 0;
    return length;
}

char16_t UpperCase(char16_t character)
{
    if (character < 0x80)
        return character >= u'a' && character <= u'z' ? static_cast<char16_t>(character - 0x20) : character;
    const UChar32 upper = u_toupper(character);
    return upper < 0x10000 ? static_cast<char16_t>(upper) : character;
}

bool EqualWithoutCase(std::u16string_view first, std::u16string_view second)
{
    return std::equal(first.begin(), first.end(), second.begin(), second.end(),
        [](char16_t left, char16_t right) { return UpperCase(left) == UpperCase(right); });
}

} // namespace qxplatform
