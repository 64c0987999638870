#include "core/packing/base64.h"

#include "core/charset/char_string.h"
#include "core/packing/base64_blocks.h"

#include <array>
#include <cstring>

namespace qx
{
namespace
{

constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// A table with the two characters for each value of 12 bits, so that three bytes cost two look-ups and two stores.
using CharacterPair = std::array<wchar_t, 2>;
constexpr auto kPairOfBits = []
{
    std::array<CharacterPair, 4096> table{};
    for (std::size_t bits = 0; bits < table.size(); ++bits)
        table[bits] = {static_cast<wchar_t>(kAlphabet[bits >> 6]), static_cast<wchar_t>(kAlphabet[bits & 63])};
    return table;
}();

constexpr unsigned char kPadding = 64;
constexpr unsigned char kIgnorable = 255;
constexpr auto kValueOfCharacter = []
{
    std::array<unsigned char, 256> table{};
    table.fill(kIgnorable);
    for (std::size_t value = 0; value < kAlphabet.size(); ++value)
        table[static_cast<unsigned char>(kAlphabet[value])] = static_cast<unsigned char>(value);
    table['='] = kPadding;
    return table;
}();

unsigned char ValueOf(wchar_t c)
{
    return c < kValueOfCharacter.size() ? kValueOfCharacter[c] : kIgnorable;
}

void WriteGroup(unsigned char* bytes, std::uint32_t bits)
{
    bytes[0] = static_cast<unsigned char>(bits >> 16);
    bytes[1] = static_cast<unsigned char>(bits >> 8);
    bytes[2] = static_cast<unsigned char>(bits);
}

// Reads a text group by group.
class GroupReader
{
public:
    explicit GroupReader(std::wstring_view text) : _at(text.data()), _end(text.data() + text.size()) {}

    // Skips characters that are not symbols. Returns false at the end of the text.
    bool FindGroup()
    {
        while (_at != _end && ValueOf(*_at) == kIgnorable)
            ++_at;
        return _at != _end;
    }

    // Decodes groups of four adjacent symbols without padding, the common case. Returns the number of groups written.
    std::size_t ReadPlainGroups(unsigned char* bytes, std::size_t maxGroups)
    {
        std::size_t groups = DecodeBase64Blocks(bytes, maxGroups, _at, static_cast<std::size_t>(_end - _at));
        _at += groups * 4;
        bytes += groups * 3;
        for (; groups < maxGroups && _end - _at >= 4; ++groups, _at += 4, bytes += 3)
        {
            const std::uint32_t a = ValueOf(_at[0]), b = ValueOf(_at[1]), c = ValueOf(_at[2]), d = ValueOf(_at[3]);
            if ((a | b | c | d) > 63)
                break;
            WriteGroup(bytes, a << 18 | b << 12 | c << 6 | d);
        }
        return groups;
    }

    // Returns the number of valid bytes of the group at the current position, determined by the characters at the
    // positions of its padding.
    std::size_t ValidBytes() const
    {
        if (*_at == L'=')
            return 0;
        if (IsPaddingAt(2))
            return 1;
        return IsPaddingAt(3) ? 2 : 3;
    }

    void ReadGroup(unsigned char* bytes)
    {
        std::uint32_t bits = 0;
        for (int symbol = 0; symbol < 4; ++symbol)
            bits = bits << 6 | NextValue();
        WriteGroup(bytes, bits);
    }

private:
    bool IsPaddingAt(std::ptrdiff_t offset) const { return _end - _at > offset && _at[offset] == L'='; }

    std::uint32_t NextValue()
    {
        if (!FindGroup())
            return 0;
        const unsigned char value = ValueOf(*_at++);
        return value == kPadding ? 0u : value;
    }

    const wchar_t* _at;
    const wchar_t* _end;
};

// Handles a buffer that ends inside a group: stores the valid bytes of the group if they fit and nothing follows.
Base64Decoded ReadLastGroup(GroupReader& reader, unsigned char* bytes, std::size_t room, Base64Tail tail)
{
    const std::size_t used = room / 3 * 3;
    const std::size_t valid = tail == Base64Tail::Whole ? 3 : reader.ValidBytes();
    unsigned char group[3];
    reader.ReadGroup(group);
    if (valid > room - used || reader.FindGroup())
        return {used, true};
    std::memcpy(bytes + used, group, valid);
    return {used + valid, false};
}

} // namespace

std::size_t Base64MostBytes(std::wstring_view text)
{
    const std::size_t padded = text.ends_with(L"==") ? 2 : text.ends_with(L"=") ? 1 : 0;
    return text.size() % 4 == 0 && !text.empty() ? text.size() / 4 * 3 - padded : (text.size() + 3) / 4 * 3;
}

void Base64EncodeTo(wchar_t* text, const void* data, std::size_t size)
{
    const auto* bytes = static_cast<const unsigned char*>(data);
    const std::size_t groups = EncodeBase64Blocks(text, bytes, size);
    text += groups * 4;
    bytes += groups * 3;
    size -= groups * 3;
    for (; size >= 3; size -= 3, bytes += 3, text += 4)
    {
        const std::uint32_t bits = static_cast<std::uint32_t>(bytes[0]) << 16 | bytes[1] << 8 | bytes[2];
        std::memcpy(text, kPairOfBits[bits >> 12].data(), sizeof(CharacterPair));
        std::memcpy(text + 2, kPairOfBits[bits & 0xFFF].data(), sizeof(CharacterPair));
    }
    if (size == 0)
        return;
    const std::uint32_t bits = static_cast<std::uint32_t>(bytes[0]) << 16 | (size == 2 ? bytes[1] << 8 : 0);
    std::memcpy(text, kPairOfBits[bits >> 12].data(), sizeof(CharacterPair));
    text[2] = size == 2 ? kPairOfBits[bits & 0xFFF][0] : L'=';
    text[3] = L'=';
}

String Base64Encode(const void* data, std::size_t size)
{
    String text;
    if (size == 0)
        return text;
    const std::size_t length = Base64Length(size);
    Base64EncodeTo(text.GetBuffer(length + 1), data, size);
    text.ReleaseBuffer(length);
    return text;
}

// A padded group in the middle of a text produces three bytes like any other, so the bytes after it keep their
// positions. Only the padding of the last group truncates the result.
Base64Decoded Base64DecodeTo(unsigned char* bytes, std::size_t room, std::wstring_view text, Base64Tail tail)
{
    GroupReader reader(text);
    const std::size_t maxGroups = room / 3;
    std::size_t groups = 0;
    std::size_t validInLast = 0;
    while (reader.FindGroup())
    {
        if (groups == maxGroups)
            return ReadLastGroup(reader, bytes, room, tail);
        const std::size_t plain = reader.ReadPlainGroups(bytes + groups * 3, maxGroups - groups);
        groups += plain;
        if (plain != 0)
        {
            validInLast = 3;
            continue;
        }
        validInLast = tail == Base64Tail::Whole ? 3 : reader.ValidBytes();
        reader.ReadGroup(bytes + groups * 3);
        ++groups;
    }
    return {groups == 0 ? 0 : (groups - 1) * 3 + validInLast, false};
}

std::size_t Base64DecodeToBytes(const String& text, ByteBlock& holder)
{
    ByteBlock block(Base64RoomForBytes(text.Length()));
    const Base64Decoded decoded =
        Base64DecodeTo(block.data(), block.size(), {text.Text(), text.Length()}, Base64Tail::ByPadding);
    block.Truncate(decoded.size);
    holder = std::move(block);
    return decoded.size;
}

String Base64DecodeToText(const String& text, std::uint32_t codePage)
{
    ByteBlock block(Base64RoomForBytes(text.Length()));
    const Base64Decoded decoded =
        Base64DecodeTo(block.data(), block.size(), {text.Text(), text.Length()}, Base64Tail::Whole);
    clsCHARString collected;
    for (std::size_t i = 0; i < decoded.size && block.data()[i] != 0; ++i)
        collected.Append(static_cast<char>(block.data()[i]));
    return collected.ToString(codePage);
}

} // namespace qx
