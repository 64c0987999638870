#include "core/charset/utf8.h"

#include "core/text/string.h"

#include <bit>
#include <cstddef>
#include <cstdint>

namespace qx
{

namespace
{

constexpr wchar_t kBadSequence[] = L"invalid UTF-8 sequence found!";
constexpr wchar_t kBadEncoding[] = L"invalid UTF-8 encoding!";
constexpr wchar_t kTooLarge[] = L"UCS-4 not supported!";

// For each sequence length, the largest value that the next shorter sequence can encode. Any 32-bit value is within the
// last limit, so a sequence of eight bytes is always rejected.
constexpr std::uint32_t kShorterFormMax[] = {
    0,
    0,
    0x7F,
    0x7FF,
    0xFFFF,
    0x1FFFFF,
    0x3FFFFFF,
    0x7FFFFFFF,
    0xFFFFFFFF,
};

// Decodes the sequence of `length` units at `units`, of which `available` exist. Returns null on success and a message
// on failure.
const wchar_t* DecodeSequence(const wchar_t* units, std::size_t available, unsigned length, wchar_t& decoded)
{
    if (length == 1 || length > available)
    {
        return kBadSequence;
    }
    std::uint32_t value = units[0] & (63U >> (length - 1));
    for (unsigned i = 1; i < length; ++i)
    {
        if ((units[i] & 0xC0) != 0x80)
        {
            return kBadSequence;
        }
        value = (value << 6) | (units[i] & 0x3FU);
    }
    if (value <= kShorterFormMax[length])
    {
        return kBadEncoding;
    }
    if (value > 0xFFFF)
    {
        return kTooLarge;
    }
    decoded = static_cast<wchar_t>(value);
    return nullptr;
}

} // namespace

String DecodeUTF8(const String& bytes)
{
    String result;
    const std::size_t length = bytes.Length();
    if (length == 0)
    {
        return result;
    }

    const wchar_t* const units = bytes.Text();
    wchar_t* const target = result.GetBuffer(length + 1);
    std::size_t written = 0;
    for (std::size_t i = 0; i < length;)
    {
        const auto leadingOnes = static_cast<unsigned>(std::countl_one(static_cast<std::uint8_t>(units[i])));
        if (leadingOnes == 0)
        {
            target[written++] = units[i++];
            continue;
        }
        if (const wchar_t* message = DecodeSequence(units + i, length - i, leadingOnes, target[written]))
        {
            return String(message);
        }
        ++written;
        i += leadingOnes;
    }
    result.ReleaseBuffer(written);
    return result;
}

String DecodeDeclared(const String& text, const String& encoding)
{
    return encoding.Compare(L"UTF-8", -1) == 0 ? DecodeUTF8(text) : text;
}

} // namespace qx
