// clsFile::GetUTFType with arbitrary bytes.
#include "files/file.h"

#include <windows.h>

#include <objbase.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string_view>

using namespace qx;

namespace
{

constexpr std::size_t kShortestGuess = 201;

void Require(bool condition)
{
    if (!condition)
    {
        abort();
    }
}

bool BeginsWithMark(std::string_view bytes)
{
    return bytes.starts_with("\xEF\xBB\xBF") || bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF");
}

bool ShowsZeroByte(std::string_view bytes)
{
    return (bytes[0] == 0) != (bytes[1] == 0);
}

// Uses the system's strict decoder, and excludes characters above U+FFFF, which the detection doesn't accept.
bool IsPlainUTF8(std::string_view text)
{
    if (text.empty())
    {
        return true;
    }
    const int size = static_cast<int>(text.size());
    const int units = MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text.data(), size, nullptr, 0);
    for (const char c : text)
    {
        if (static_cast<unsigned char>(c) >= 0xF0)
        {
            return false;
        }
    }
    return units > 0;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    clsAutoRelease<IStream*> stream;
    Require(SUCCEEDED(CreateStreamOnHGlobal(nullptr, TRUE, stream.Receive())));
    clsFile file(stream.Get());
    Require(file.Write(data, size) == static_cast<std::int64_t>(size));
    file.Seek(0);

    const UTFType type = file.GetUTFType();
    const std::int64_t position = file.Tell();
    if (BeginsWithMark(bytes))
    {
        Require(type != UTFType::Unknown);
        Require(position == (type == UTFType::UTF8 ? 3 : 2));
        return 0;
    }
    Require(position == 0);
    if (size < 2)
    {
        Require(type == UTFType::Unknown);
    }
    else if (ShowsZeroByte(bytes))
    {
        Require(type == (bytes[0] == 0 ? UTFType::UTF16BE : UTFType::UTF16LE));
    }
    else if (size < kShortestGuess)
    {
        Require(type == UTFType::Unknown);
    }
    else if (IsPlainUTF8(bytes.substr(0, bytes.find('\0'))))
    {
        Require(type == UTFType::UTF8);
    }
    return 0;
}
