#include "files/packed_text.h"

#include "core/debug_line.h"
#include "core/packing/base64.h"
#include "core/packing/blowfish.h"
#include "files/file.h"
#include "files/zlib_parameters.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <iterator>
#include <limits>
#include <string_view>
#include <utility>
#include <vector>

namespace qx
{
namespace
{

enum class Form
{
    Plain,
    Version1,
    Version2
};

constexpr std::wstring_view kVersion1Prefix = L"@1@";
constexpr std::wstring_view kVersion2Prefix = L"@2@";

constexpr std::size_t kSizeFieldLength = 4;
constexpr char kTag[] = "QvX_Packed"; // including the terminating zero
constexpr std::size_t kVersion2HeadLength = kSizeFieldLength + sizeof(kTag);

constexpr int kPackedMode = 4;
constexpr int kZlibWindowBits = 15;

// The smallest images that are encrypted and decrypted. The limits differ: an encrypted image of 8 to 11 bytes can't be
// restored, because fewer than 12 bytes are never decrypted.
constexpr std::size_t kSmallestEnciphered = 8;
constexpr std::size_t kSmallestDeciphered = 12;

// Deflate data never expand to more than 1032 times their size, so a larger stored size is invalid.
constexpr std::uint64_t kMaxExpansion = 1032;

void StoreSize(unsigned char* at, std::uint32_t size)
{
    for (int i = 0; i < 4; ++i)
        at[i] = static_cast<unsigned char>(size >> (8 * i));
}

std::uint32_t LoadSize(const unsigned char* at)
{
    std::uint32_t size = 0;
    for (int i = 3; i >= 0; --i)
        size = size << 8 | at[i];
    return size;
}

// Returns a count for zlib, limited to its 32 bits.
uInt ZlibCount(std::size_t count)
{
    return static_cast<uInt>(std::min<std::size_t>(count, std::numeric_limits<uInt>::max()));
}

// Returns the compressed size, or 0 if the result doesn't fit `room`.
std::size_t DeflateAtOnce(unsigned char* target, std::size_t room, const unsigned char* data, std::uint32_t size)
{
    const DeflateMode mode = DeflateModeOf(kPackedMode);
    z_stream stream{};
    if (UnlessOutOfMemory(
            deflateInit2(&stream, mode.level, Z_DEFLATED, kZlibWindowBits, mode.memoryLevel, mode.strategy)) != Z_OK)
        return 0;
    stream.next_in = const_cast<unsigned char*>(data);
    stream.avail_in = size;
    stream.next_out = target;
    stream.avail_out = ZlibCount(room);
    const int code = deflate(&stream, Z_FINISH);
    const std::size_t made = static_cast<std::size_t>(stream.next_out - target);
    deflateEnd(&stream);
    return code == Z_STREAM_END ? made : 0;
}

// The zlib stream of an image and the stored size of its data.
struct ZlibPart
{
    const unsigned char* data = nullptr;
    std::size_t length = 0;
    std::uint32_t size = 0;

    bool IsLie() const { return size > length * kMaxExpansion; }
};

// Returns the number of bytes after the stream, or nothing if the stream doesn't contain exactly `part.size` bytes.
// `target` must have room for them.
std::optional<std::size_t> InflateTo(unsigned char* target, const ZlibPart& part)
{
    z_stream stream{};
    if (UnlessOutOfMemory(inflateInit2(&stream, kZlibWindowBits)) != Z_OK)
        return std::nullopt;
    stream.next_in = const_cast<unsigned char*>(part.data);
    stream.avail_in = ZlibCount(part.length);
    stream.next_out = target;
    stream.avail_out = part.size;
    const int code = inflate(&stream, Z_FINISH);
    const bool isWhole = code == Z_STREAM_END && stream.total_out == part.size;
    const auto rest = static_cast<std::size_t>(part.data + part.length - stream.next_in);
    inflateEnd(&stream);
    return isWhole ? std::optional(rest) : std::nullopt;
}

struct InflatedPart
{
    ByteBlock data;
    std::optional<std::size_t> rest; // see InflateTo
};

InflatedPart InflatedAndRest(const ZlibPart& part)
{
    if (part.IsLie())
        return {};
    // One extra byte, because zlib needs an output address even for an empty stream.
    InflatedPart inflated{ByteBlock(std::size_t{part.size} + 1), {}};
    inflated.rest = InflateTo(inflated.data.data(), part);
    inflated.data.Truncate(inflated.rest ? part.size : 0);
    return inflated;
}

// Returns the data of the stream, or an empty block on failure.
ByteBlock Inflated(const ZlibPart& part)
{
    return InflatedAndRest(part).data;
}

// Returns size, tag and zlib stream, or an empty block if compression fails.
ByteBlock CompressedImage(const unsigned char* data, std::uint32_t size)
{
    // Room for 10 % more than the data, plus 64 bytes for the head and zlib's overhead on short incompressible data.
    // With only 23 bytes, some texts of 19 bytes wouldn't fit and would be lost. The room has no influence on the
    // result.
    ByteBlock image(std::size_t{size} + size / 10 + 64);
    StoreSize(image.data(), size);
    std::memcpy(image.data() + kSizeFieldLength, kTag, sizeof(kTag));
    const std::size_t packed =
        DeflateAtOnce(image.data() + kVersion2HeadLength, image.size() - kVersion2HeadLength, data, size);
    image.Truncate(packed == 0 ? 0 : kVersion2HeadLength + packed);
    return image;
}

ByteBlock CopyOf(const unsigned char* data, std::size_t size)
{
    ByteBlock copy(size);
    std::memcpy(copy.data(), data, size);
    return copy;
}

// Reads the whole source, in as many calls as necessary. Returns nothing if the source yields fewer bytes than it
// reports.
std::optional<ByteBlock> ReadAll(clsFile& source)
{
    const std::int64_t told = source.GetSize();
    if (told < 0)
        return std::nullopt;
    const auto size = static_cast<std::uint32_t>(told);
    ByteBlock data(size);
    source.Seek(0);
    for (std::uint32_t done = 0; done < size;)
    {
        const std::uint32_t read = source.Read(data.data() + done, size - done);
        if (read == 0)
            return std::nullopt;
        done += read;
    }
    return data;
}

Form FormOf(std::wstring_view text)
{
    if (text.starts_with(kVersion2Prefix))
        return Form::Version2;
    return text.starts_with(kVersion1Prefix) ? Form::Version1 : Form::Plain;
}

std::wstring_view EncodedPart(std::wstring_view text, Form form)
{
    return form == Form::Plain ? text : text.substr(kVersion2Prefix.size());
}

void Decipher(ByteBlock& image, const String& key)
{
    if (image.size() >= kSmallestDeciphered && key.Length() != 0)
        clsBlowfish(key.NarrowText()).Decode(image.data(), image.size());
}

// Returns the decoded and decrypted bytes of a text.
std::optional<ByteBlock> ImageOfText(std::wstring_view text, Form form, const String& key)
{
    const std::wstring_view encoded = EncodedPart(text, form);
    ByteBlock image(Base64RoomForBytes(encoded.size()));
    const Base64Decoded decoded = Base64DecodeTo(
        image.data(), image.size(), encoded, form == Form::Version1 ? Base64Tail::Whole : Base64Tail::ByPadding);
    if (decoded.cut)
    {
        DebugLine(L"ERR: Base64 string has bad format!");
        return std::nullopt;
    }
    image.Truncate(decoded.size);
    Decipher(image, key);
    return image;
}

// Returns nothing if the image isn't compressed.
std::optional<ZlibPart> ZlibPartOf(const ByteBlock& image, Form form)
{
    std::size_t head = kSizeFieldLength;
    if (form == Form::Version1 && image.size() < head)
        return ZlibPart();
    if (form != Form::Version1)
    {
        head = kVersion2HeadLength;
        if (form == Form::Plain || image.size() < head ||
            std::memcmp(image.data() + kSizeFieldLength, kTag, sizeof(kTag)) != 0)
            return std::nullopt;
    }
    return ZlibPart{image.data() + head, image.size() - head, LoadSize(image.data())};
}

// ---- Strict unpacking

constexpr std::wstring_view kWhiteSpace = L" \t\r\n";
constexpr std::size_t kGroup = 4; // characters of Base64
constexpr std::size_t kMostPadding = 2;

std::wstring_view Trimmed(std::wstring_view text)
{
    text.remove_prefix(std::min(text.find_first_not_of(kWhiteSpace), text.size()));
    text.remove_suffix(text.size() - (text.find_last_not_of(kWhiteSpace) + 1));
    return text;
}

bool IsSymbol(wchar_t c)
{
    return (c >= L'A' && c <= L'Z') || (c >= L'a' && c <= L'z') || (c >= L'0' && c <= L'9') || c == L'+' || c == L'/';
}

std::size_t PaddingOf(std::wstring_view encoded)
{
    return encoded.size() - (encoded.find_last_not_of(L'=') + 1);
}

// Returns true for whole groups of symbols, padded only at the end. The bits before the padding must be zero.
bool IsBase64(std::wstring_view encoded)
{
    const std::size_t padding = PaddingOf(encoded);
    if (encoded.empty() || encoded.size() % kGroup != 0 || padding > kMostPadding ||
        !std::all_of(encoded.begin(), encoded.end() - static_cast<std::ptrdiff_t>(padding), IsSymbol))
        return false;
    unsigned char bytes[kGroup];
    wchar_t again[kGroup];
    const std::wstring_view last = encoded.substr(encoded.size() - kGroup);
    Base64EncodeTo(again, bytes, Base64DecodeTo(bytes, sizeof bytes, last, Base64Tail::ByPadding).size);
    return last == std::wstring_view(again, kGroup);
}

// Unpacks a text that contains no white space.
Unpacked UnpackWithoutSpace(std::wstring_view text, const String& key)
{
    const Form form = FormOf(text);
    const std::wstring_view encoded = EncodedPart(text, form);
    if (!IsBase64(encoded))
        return {{}, UnpackFault::NotPackedText};
    std::optional<ByteBlock> image = ImageOfText(text, form, String());
    const bool hasKey = key.Length() != 0;
    if (hasKey && form == Form::Version2 && ZlibPartOf(*image, form))
        return {{}, UnpackFault::NotEncrypted};
    Decipher(*image, key);
    const std::optional<ZlibPart> part = ZlibPartOf(*image, form);
    if (!part)
        return form == Form::Plain ? Unpacked{std::move(*image)} : Unpacked{{}, UnpackFault::WrongKey};

    InflatedPart inflated = InflatedAndRest(*part);
    // The image of version 1 also contains the bytes of the padding.
    if (!inflated.rest || *inflated.rest > (form == Form::Version1 ? PaddingOf(encoded) : 0))
        return {{}, hasKey && form == Form::Version1 ? UnpackFault::WrongKey : UnpackFault::Damaged};
    return {std::move(inflated.data)};
}

void Replace(clsFile& target, const ByteBlock& data)
{
    target.Seek(0);
    if (target.IsOpen())
        target.Write(data.data(), static_cast<std::uint32_t>(data.size()));
    target.SetEOF();
    target.Seek(0);
}

} // namespace

PackedText::PackedText(const void* data, std::uint32_t size, bool compress, const String& key)
    : _bytes(static_cast<const unsigned char*>(data)),
      _size(size)
{
    Pack(compress, key);
}

PackedText::PackedText(clsFile& source, bool compress, const String& key)
{
    std::optional<ByteBlock> data = ReadAll(source);
    _isWhole = data.has_value();
    TakeImage(data ? std::move(*data) : ByteBlock());
    Pack(compress, key);
}

void PackedText::Pack(bool compress, const String& key)
{
    if (_size == 0)
        return;
    if (compress)
    {
        _prefix = kVersion2Prefix;
        TakeImage(CompressedImage(_bytes, _size));
    }
    if (_size >= kSmallestEnciphered && key.Length() != 0)
    {
        if (_bytes != _image.data())
            TakeImage(CopyOf(_bytes, _size));
        clsBlowfish(key.NarrowText()).Encode(_image.data(), _size);
    }
}

void PackedText::TakeImage(ByteBlock image)
{
    _image = std::move(image);
    _bytes = _image.data();
    _size = static_cast<std::uint32_t>(_image.size());
}

std::size_t PackedText::Length() const
{
    return _prefix.size() + Base64Length(_size);
}

void PackedText::WriteTo(wchar_t* text) const
{
    _prefix.copy(text, _prefix.size());
    Base64EncodeTo(text + _prefix.size(), _bytes, _size);
}

String PackToString(clsFile& source, bool compress, const String& key)
{
    const PackedText packed(source, compress, key);
    String text;
    const std::size_t length = packed.Length();
    if (length == 0)
        return text;
    packed.WriteTo(text.GetBuffer(length + 1));
    text.ReleaseBuffer(length);
    return text;
}

std::optional<ByteBlock> DataOfPackedText(std::wstring_view text, const String& key)
{
    if (text.empty())
        return std::nullopt;
    const Form form = FormOf(text);
    std::optional<ByteBlock> image = ImageOfText(text, form, key);
    if (!image)
        return std::nullopt;
    const std::optional<ZlibPart> part = ZlibPartOf(*image, form);
    return part ? Inflated(*part) : std::move(*image);
}

const wchar_t* TextOfFault(UnpackFault fault)
{
    switch (fault)
    {
    case UnpackFault::NotPackedText:
        return L"is not packed text";
    case UnpackFault::WrongKey:
        return L"the pass phrase is wrong or missing, or the packed text is damaged";
    case UnpackFault::NotEncrypted:
        return L"is not encrypted, but there is a pass phrase";
    case UnpackFault::Damaged:
        return L"the packed text is damaged";
    default:
        return L"";
    }
}

Unpacked UnpackStrictly(std::wstring_view text, const String& key)
{
    text = Trimmed(text);
    if (text.empty())
        return {};
    if (text.find_first_of(kWhiteSpace) == text.npos)
        return UnpackWithoutSpace(text, key);
    std::vector<wchar_t> symbols;
    symbols.reserve(text.size());
    std::copy_if(text.begin(), text.end(), std::back_inserter(symbols),
        [](wchar_t c) { return kWhiteSpace.find(c) == kWhiteSpace.npos; });
    return UnpackWithoutSpace({symbols.data(), symbols.size()}, key);
}

std::optional<std::size_t> UnpackTo(unsigned char* data, std::size_t room, std::wstring_view text)
{
    const Form form = FormOf(text);
    if (form == Form::Plain && Base64MostBytes(text) <= room)
    {
        const Base64Decoded decoded = Base64DecodeTo(data, room, text, Base64Tail::ByPadding);
        return decoded.cut ? std::nullopt : std::optional(decoded.size);
    }

    const std::optional<ByteBlock> image = ImageOfText(text, form, String());
    if (!image)
        return 0;
    const std::optional<ZlibPart> part = ZlibPartOf(*image, form);
    if (part && part->size <= room)
        return !part->IsLie() && InflateTo(data, *part) ? part->size : 0;

    const ByteBlock inflated = part ? Inflated(*part) : ByteBlock();
    const ByteBlock& unpacked = part ? inflated : *image;
    if (unpacked.size() > room)
        return std::nullopt;
    std::copy_n(unpacked.data(), unpacked.size(), data);
    return unpacked.size();
}

bool UnpackFromString(clsFile& target, std::wstring_view text, const String& key)
{
    const std::optional<ByteBlock> data = DataOfPackedText(text, key);
    if (data)
        Replace(target, *data);
    return data.has_value();
}

} // namespace qx
