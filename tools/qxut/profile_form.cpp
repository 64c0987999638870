#include "profile_form.h"

#include <qxut23/profile.h>

#include <zlib.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string_view>

namespace qxut
{

namespace
{

constexpr std::size_t kSample = 4096; // bytes, in which a first line has room
constexpr std::string_view kPackedMagic = "ZxvQ";
constexpr int kMostLayers = 16; // a packed file that is packed again, as often as the library takes it
constexpr std::string_view kXmlFirstLine = R"(<?xml version="1.0" encoding="UTF-16" standalone="yes"?>)";
constexpr std::string_view kXfdfFirstLine = R"(<?xml version="1.0" encoding="UTF-8"?>)";

std::string BeginningOf(const std::string& path)
{
    std::ifstream file(std::filesystem::u8path(path), std::ios::binary);
    std::string bytes(kSample, '\0');
    file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    bytes.resize(static_cast<std::size_t>(file.gcount()));
    return bytes;
}

std::string BeginningUnpacked(std::string_view packed)
{
    std::string bytes(kSample, '\0');
    z_stream stream{};
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(packed.data()));
    stream.avail_in = static_cast<uInt>(packed.size());
    stream.next_out = reinterpret_cast<Bytef*>(bytes.data());
    stream.avail_out = static_cast<uInt>(bytes.size());
    if (inflateInit2(&stream, -MAX_WBITS) != Z_OK)
        return {};
    inflate(&stream, Z_SYNC_FLUSH);
    inflateEnd(&stream);
    bytes.resize(stream.total_out);
    return bytes;
}

// Both first lines that matter are ASCII, so it's enough to leave out what other encodings have beside it.
std::string FirstLine(std::string bytes)
{
    constexpr std::string_view kMarksAndZeros("\0\xFF\xFE\xEF\xBB\xBF", 6);
    bytes.erase(std::remove_if(bytes.begin(), bytes.end(),
                    [&](char c) { return kMarksAndZeros.find(c) != std::string_view::npos; }),
        bytes.end());
    bytes.erase(0, bytes.find_first_not_of("\r\n \t"));
    return bytes.substr(0, bytes.find_first_of("\r\n"));
}

} // namespace

std::int32_t FormOfFile(const std::string& path)
{
    std::string bytes = BeginningOf(path);
    for (int layer = 0; layer < kMostLayers && std::string_view(bytes).starts_with(kPackedMagic); ++layer)
        bytes = BeginningUnpacked(std::string_view(bytes).substr(kPackedMagic.size()));
    const std::string line = FirstLine(bytes);
    if (line == kXmlFirstLine)
        return PROF_FORM_XML;
    return line == kXfdfFirstLine ? PROF_FORM_XFDF : PROF_FORM_TEXT;
}

} // namespace qxut
