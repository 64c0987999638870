// Binary data as one line of text: optionally compressed (zlib, RFC 1950), optionally encrypted with the caller's pass
// phrase (`clsBlowfish`), and encoded in Base64 (RFC 4648).
//
// Compressed data have the prefix "@2@". Their image begins with the original size (4 bytes, little-endian) and a tag
// that reveals a wrong pass phrase. The older prefix "@1@", without the tag, is only read, never written.
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

// Packed text that is ready to be written directly to its destination. Empty data yield an empty text.
class PackedText
{
public:
    // `data` belongs to the caller and must remain valid until the text is written.
    PackedText(const void* data, std::uint32_t size, bool compress, const String& key);
    // Packs the whole source, like PackToString.
    PackedText(clsFile& source, bool compress, const String& key);
    PackedText(const PackedText&) = delete;
    PackedText& operator=(const PackedText&) = delete;

    // Returns false if the source couldn't be read completely. The text is empty then.
    bool IsWhole() const { return _isWhole; }

    std::size_t Length() const;
    // Writes `Length()` characters, without a terminator.
    void WriteTo(wchar_t* text) const;

private:
    void Pack(bool compress, const String& key);
    void TakeImage(ByteBlock image);

    std::wstring_view _prefix;
    ByteBlock _image; // the bytes to encode, unless the caller's data are encoded directly
    const unsigned char* _bytes;
    std::uint32_t _size;
    bool _isWhole = true;
};

// Returns the data of a packed text, or nothing for an empty text. See UnpackFromString.
std::optional<ByteBlock> DataOfPackedText(std::wstring_view text, const String& key);

// Returns the whole source, regardless of its position, as packed text. Returns an empty text if the source is empty or
// can't be read completely. Sizes are truncated to 32 bits. An empty key means no encryption.
String PackToString(clsFile& source, bool compress, const String& key);

// Unpacks to memory, without a key. Returns the number of bytes, or 0 for damaged data. Returns nothing if there are
// more than `room` bytes; `data` is unchanged then, unless the text ends inside a Base64 group.
std::optional<std::size_t> UnpackTo(unsigned char* data, std::size_t room, std::wstring_view text);

// Why a text can't be unpacked strictly.
enum class UnpackFault
{
    None,
    NotPackedText, // a character outside Base64, or an impossible length
    WrongKey,      // with a key: wrong key or damaged data; without a key: encrypted or damaged data
    NotEncrypted,  // there is a key, but the text can be unpacked without one
    Damaged        // the compressed data is damaged, doesn't have the stored size, or is followed by more text
};

// Returns a description that can follow the name of a file.
const wchar_t* TextOfFault(UnpackFault fault);

struct Unpacked
{
    ByteBlock data;
    UnpackFault fault = UnpackFault::None;
};

// Returns the data of a packed text only if packing can have produced the text, apart from white space, which is
// skipped everywhere. The empty text contains no data. A wrong key is detected by the beginning and the end of
// compressed data; without compression it can't be detected.
Unpacked UnpackStrictly(std::wstring_view text, const String& key);

// Writes the data of a packed text to the target, starting at 0, truncates the target after them and rewinds it.
// Returns false for an empty text and leaves the target unchanged. With a wrong key the data is meaningless, and
// damaged compressed data yields no bytes. Both cases return true, because the text contains nothing that distinguishes
// them from valid data.
bool UnpackFromString(clsFile& target, std::wstring_view text, const String& key);

} // namespace qx
