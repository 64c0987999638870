#include "files/packed_text.h"

#include "core/base64.h"
#include "core/blowfish.h"
#include "core/debug_line.h"
#include "files/deflate_mode.h"
#include "files/file.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <string_view>

namespace qx
{
namespace
{

enum class Form
{
    plain,
    version1,
    version2
};

constexpr std::wstring_view version1Prefix = L"@1@";
constexpr std::wstring_view version2Prefix = L"@2@";

constexpr std::size_t sizeFieldLength = 4;
constexpr char tag[] = "QvX_Packed"; // with its zero byte
constexpr std::size_t version2HeadLength = sizeFieldLength + sizeof(tag);

constexpr int packedMode = 4;
constexpr int zlibWindowBits = 15;

// The smallest images that the cipher is applied to. They differ: an image of 8 to 11 bytes cannot come back, since
// Base64 of fewer than 12 bytes is never deciphered.
constexpr std::size_t smallestEnciphered = 8;
constexpr std::size_t smallestDeciphered = 12;

// No deflate stream inflates to more than 1032 times its size, so a stored size beyond that is a lie.
constexpr std::uint64_t maxExpansion = 1032;

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

// zlib's counts have 32 bits.
uInt ZlibCount(std::size_t count)
{
    return static_cast<uInt>(std::min<std::size_t>(count, std::numeric_limits<uInt>::max()));
}

// Gives the compressed size, or 0 when the data do not go into the room.
std::size_t DeflateAtOnce(unsigned char* target, std::size_t room, const unsigned char* data, std::uint32_t size)
{
    const DeflateMode mode = DeflateModeOf(packedMode);
    z_stream stream{};
    if (deflateInit2(&stream, mode.level, Z_DEFLATED, zlibWindowBits, mode.memoryLevel, mode.strategy) != Z_OK)
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

// The data of a zlib stream if it holds exactly `size` bytes, else an empty block.
ByteBlock InflateAtOnce(const unsigned char* data, std::size_t length, std::uint32_t size)
{
    if (size > length * maxExpansion)
        return {};
    z_stream stream{};
    if (inflateInit2(&stream, zlibWindowBits) != Z_OK)
        return {};
    // One byte to spare: a stream of no bytes needs an address too.
    ByteBlock block(std::size_t{size} + 1);
    stream.next_in = const_cast<unsigned char*>(data);
    stream.avail_in = ZlibCount(length);
    stream.next_out = block.data();
    stream.avail_out = size;
    const int code = inflate(&stream, Z_FINISH);
    const bool whole = code == Z_STREAM_END && stream.total_out == size;
    inflateEnd(&stream);
    block.Truncate(whole ? size : 0);
    return block;
}

// Size, tag and zlib stream; empty if compression failed.
ByteBlock CompressedImage(const ByteBlock& data)
{
    // A tenth more than the data, and what zlib adds to data of a few bytes.
    ByteBlock image(data.size() / 10 + 64 + data.size());
    const auto size = static_cast<std::uint32_t>(data.size());
    StoreSize(image.data(), size);
    std::memcpy(image.data() + sizeFieldLength, tag, sizeof(tag));
    const std::size_t packed =
        DeflateAtOnce(image.data() + version2HeadLength, image.size() - version2HeadLength, data.data(), size);
    image.Truncate(packed == 0 ? 0 : version2HeadLength + packed);
    return image;
}

String TextOfImage(std::wstring_view prefix, const ByteBlock& image)
{
    const std::size_t length = prefix.size() + Base64Length(image.size());
    String text;
    if (length == 0)
        return text;
    wchar_t* characters = text.GetBuffer(length + 1);
    prefix.copy(characters, prefix.size());
    Base64EncodeTo(characters + prefix.size(), image.data(), image.size());
    text.ReleaseBuffer(length);
    return text;
}

ByteBlock ReadAll(clsFile& source)
{
    const auto size = static_cast<std::uint32_t>(source.GetSize());
    ByteBlock data(size);
    source.Seek(0);
    data.Truncate(source.Read(data.data(), size));
    return data;
}

Form FormOf(std::wstring_view text)
{
    if (text.starts_with(version2Prefix))
        return Form::version2;
    return text.starts_with(version1Prefix) ? Form::version1 : Form::plain;
}

// The data of a decoded (and deciphered) image.
ByteBlock DataOfImage(ByteBlock image, Form form)
{
    if (form == Form::version1)
        return image.size() < sizeFieldLength ? ByteBlock()
                                              : InflateAtOnce(image.data() + sizeFieldLength,
                                                    image.size() - sizeFieldLength, LoadSize(image.data()));
    const bool tagged = form == Form::version2 && image.size() >= version2HeadLength &&
                        std::memcmp(image.data() + sizeFieldLength, tag, sizeof(tag)) == 0;
    if (!tagged)
        return image;
    return InflateAtOnce(image.data() + version2HeadLength, image.size() - version2HeadLength, LoadSize(image.data()));
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

String PackToString(clsFile& source, bool compress, const String& key)
{
    if (static_cast<std::uint32_t>(source.GetSize()) == 0)
        return String();
    ByteBlock image = ReadAll(source);
    if (compress)
        image = CompressedImage(image);
    if (image.size() >= smallestEnciphered && key.Length() != 0)
        clsBlowfish(key.NarrowText()).Encode(image.data(), image.size());
    return TextOfImage(compress ? version2Prefix : std::wstring_view(), image);
}

bool UnpackFromString(clsFile& target, const String& text, const String& key)
{
    const std::wstring_view characters(text.Text(), text.Length());
    if (characters.empty())
        return false;
    const Form form = FormOf(characters);
    const std::wstring_view encoded = form == Form::plain ? characters : characters.substr(version2Prefix.size());

    ByteBlock image(Base64RoomForBytes(encoded.size()));
    const Base64Decoded decoded = Base64DecodeTo(
        image.data(), image.size(), encoded, form == Form::version1 ? Base64Tail::whole : Base64Tail::byPadding);
    if (decoded.cut)
    {
        DebugLine(L"ERR: Base64 string has bad format!");
        return false;
    }
    image.Truncate(decoded.size);
    if (image.size() >= smallestDeciphered && key.Length() != 0)
        clsBlowfish(key.NarrowText()).Decode(image.data(), image.size());
    Replace(target, DataOfImage(std::move(image), form));
    return true;
}

} // namespace qx
