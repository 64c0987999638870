#include "files/deflate_stream.h"

#include "unit/packed/memory_file.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <random>
#include <string>

using namespace qx;
using namespace qxtest;

namespace
{

std::string Sample(std::size_t size)
{
    std::mt19937 random(5);
    std::string data(size, '\0');
    for (char& octet : data)
        octet = static_cast<char>('a' + random() % 20);
    return data;
}

// zlib alone, as the other reader.
std::string RawInflate(const std::string& packed, std::size_t size)
{
    std::string data(size + 1, '\0');
    z_stream stream{};
    EXPECT_EQ(inflateInit2(&stream, -15), Z_OK);
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(packed.data()));
    stream.avail_in = static_cast<uInt>(packed.size());
    stream.next_out = reinterpret_cast<Bytef*>(data.data());
    stream.avail_out = static_cast<uInt>(data.size());
    EXPECT_EQ(inflate(&stream, Z_FINISH), Z_STREAM_END);
    data.resize(stream.total_out);
    inflateEnd(&stream);
    return data;
}

} // namespace

TEST(DeflateStream, EachModeRoundTrips)
{
    const std::string data = Sample(2'500'000); // more than two chunks
    std::size_t fastest = 0, best = 0;
    for (int mode = 0; mode <= 8; ++mode)
    {
        MemoryFile source(data), packed, unpacked;
        std::uint32_t crc = 1;
        EXPECT_EQ(DeflateStream(packed, source, mode, &crc, -1), Z_STREAM_END);
        EXPECT_EQ(crc, crc32(0, reinterpret_cast<const Bytef*>(data.data()), static_cast<uInt>(data.size())));
        EXPECT_EQ(RawInflate(packed.Bytes(), data.size()), data);
        packed.Seek(0);
        EXPECT_EQ(InflateStream(unpacked, packed, -1), 0);
        EXPECT_EQ(unpacked.Bytes(), data);
        (mode == 1 ? fastest : best) = static_cast<std::size_t>(packed.GetSize());
    }
    EXPECT_GT(fastest, best);
}

TEST(DeflateStream, WorksBetweenPositions)
{
    MemoryFile source("..abcdef.."), packed("head, and a long tail that goes away"), unpacked("> and more");
    source.Seek(2);
    packed.Seek(4);
    EXPECT_EQ(DeflateStream(packed, source, 2, nullptr, 6), Z_STREAM_END);
    EXPECT_EQ(source.Tell(), 8);
    const std::int64_t size = packed.GetSize();
    EXPECT_EQ(packed.Tell(), size);
    EXPECT_EQ(packed.Bytes().substr(0, 4), "head");
    packed.Seek(4);
    unpacked.Seek(1);
    EXPECT_EQ(InflateStream(unpacked, packed, size - 4), 0);
    EXPECT_EQ(unpacked.Bytes(), ">abcdef");
}

TEST(DeflateStream, EmptySource)
{
    MemoryFile source, packed, unpacked("old");
    std::uint32_t crc = 7;
    EXPECT_EQ(DeflateStream(packed, source, 1, &crc, -1), Z_STREAM_END);
    EXPECT_EQ(crc, 0u);
    EXPECT_EQ(packed.Bytes(), std::string("\x03\0", 2));
    packed.Seek(0);
    EXPECT_EQ(InflateStream(unpacked, packed, -1), 0);
    EXPECT_EQ(unpacked.Bytes(), "");
}

TEST(DeflateStream, FailuresOfBothDirections)
{
    MemoryFile shortSource("abc"), target;
    EXPECT_EQ(DeflateStream(target, shortSource, 1, nullptr, 4), Z_DATA_ERROR);

    MemoryFile noise("\xFF\xFF\xFF\xFF");
    EXPECT_EQ(InflateStream(target, noise, -1), Z_DATA_ERROR);

    MemoryFile tooShort("abc");
    EXPECT_EQ(InflateStream(target, tooShort, 9), Z_DATA_ERROR);

    MemoryFile source("abc");
    clsFileRW closed;
    EXPECT_LT(DeflateStream(closed, source, 1, nullptr, -1), 0);
    MemoryFile packed;
    source.Seek(0);
    DeflateStream(packed, source, 1, nullptr, -1);
    packed.Seek(0);
    EXPECT_EQ(InflateStream(closed, packed, -1), Z_BUF_ERROR);
}
