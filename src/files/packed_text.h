// Binary data as one line of text: optionally compressed (zlib, RFC 1950), optionally enciphered under the caller's
// pass phrase (`clsBlowfish`), and written in Base64 (RFC 4648).
//
// Compressed data stand behind the prefix "@2@", and their image begins with the original size (4 bytes, little-endian)
// and a tag by which a wrong pass phrase is told. The older form "@1@", without the tag, is read only.
#pragma once

#include "core/packing/byte_block.h"
#include "core/text/string.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace qx
{

class clsFile;

// A packed text that isn't written yet, so that it can go straight to where it is wanted. No data give the empty text.
class PackedText
{
public:
    // `data` is the caller's and must stay until the text is written.
    PackedText(const void* data, std::uint32_t size, bool compress, const String& key);
    // All of the source, as PackToString takes it.
    PackedText(clsFile& source, bool compress, const String& key);
    PackedText(const PackedText&) = delete;
    PackedText& operator=(const PackedText&) = delete;

    // False if the source couldn't be read to its end; the text is empty then.
    bool IsWhole() const { return _isWhole; }

    std::size_t Length() const;
    // Writes `Length()` characters, without a terminator.
    void WriteTo(wchar_t* text) const;

private:
    void Pack(bool compress, const String& key);
    void TakeImage(ByteBlock image);

    std::wstring_view _prefix;
    ByteBlock _image; // what is encoded, unless that is the caller's data
    const unsigned char* _bytes;
    std::uint32_t _size;
    bool _isWhole = true;
};

// The data of a packed text; nothing for an empty one. See UnpackFromString.
std::optional<ByteBlock> DataOfPackedText(std::wstring_view text, const String& key);

// All of the source, whatever its position, as packed text; an empty source gives the empty text, and so does one
// that can't be read whole. Sizes are cut to 32 bits. An empty key means no encipherment.
String PackToString(clsFile& source, bool compress, const String& key);

// Unpacks to memory and gives the count of bytes, 0 for what UnpackFromString refuses. Nothing, with the memory
// untouched unless the text ends inside a group, if there are more than `room`. No key.
std::optional<std::size_t> UnpackTo(unsigned char* data, std::size_t room, std::wstring_view text);

// Writes the data of a packed text to the target from 0 on, cuts it there and rewinds it. False, with the target
// untouched, for an empty text. A wrong key gives meaningless bytes and damaged compressed data give none; both are
// true, since the text cannot tell them from data.
bool UnpackFromString(clsFile& target, std::wstring_view text, const String& key);

} // namespace qx
