// Unpacking of arbitrary text, including wrong sizes. The result must survive packing and unpacking, and must not be
// larger than the text can represent. Where strict unpacking succeeds, its result must be the same.
#include "files/packed_text.h"
#include "core/text/string.h"
#include "files/file.h"

#include <windows.h>

#include <objbase.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

using namespace qx;

namespace
{

// zlib streams expand at most 1032 times; short ones slightly more.
constexpr std::size_t kMostGrowth = 1100;

std::vector<std::uint8_t> ContentOf(clsFile& file)
{
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(file.GetSize()));
    if (!bytes.empty() && file.clsFile::Read(bytes.data(), static_cast<std::uint32_t>(bytes.size())) != bytes.size())
        std::abort();
    return bytes;
}

clsAutoRelease<IStream*> NewStream()
{
    clsAutoRelease<IStream*> stream;
    if (CreateStreamOnHGlobal(nullptr, TRUE, stream.Receive()) != S_OK)
        std::abort();
    return stream;
}

std::vector<std::uint8_t> BytesOf(const String& text, const String& key)
{
    const clsAutoRelease<IStream*> stream = NewStream();
    clsFileRW file(stream.Get());
    if (!UnpackFromString(file, text.View(), key) && file.GetSize() != 0)
        std::abort();
    return ContentOf(file);
}

String Packed(const std::vector<std::uint8_t>& bytes, bool compress, const String& key)
{
    const clsAutoRelease<IStream*> stream = NewStream();
    ULONG written = 0;
    stream->Write(bytes.data(), static_cast<ULONG>(bytes.size()), &written);
    clsFileRO file(stream.Get());
    return PackToString(file, compress, key);
}

} // namespace

// In the first byte, bit 0 selects a key and bit 1 compression. The rest is the text, one 8-bit character per byte.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    const String key(data[0] & 1 ? L"key" : L"");
    std::vector<wchar_t> text(data + 1, data + size);
    text.push_back(0);
    const std::vector<std::uint8_t> bytes = BytesOf(String(text.data()), key);
    if (bytes.size() > size * kMostGrowth)
        std::abort();
    const Unpacked strict = UnpackStrictly(String(text.data()).View(), key);
    const bool hasSpace = std::any_of(text.begin(), text.end(), [](wchar_t c) { return c <= L' ' && c != 0; });
    if (strict.fault == UnpackFault::None && !hasSpace &&
        !std::equal(bytes.begin(), bytes.end(), strict.data.data(), strict.data.data() + strict.data.size()))
        std::abort();
    const bool compress = (data[0] & 2) != 0;
    // Encrypted images of 8 to 11 bytes are too short to be decrypted.
    const bool comesBack = compress || key.Length() == 0 || bytes.size() < 8 || bytes.size() > 11;
    if (!bytes.empty() && comesBack && BytesOf(Packed(bytes, compress, key), key) != bytes)
        std::abort();
    return 0;
}
