#include "files/deflate_stream.h"

#include "support/zlib_reference.h"
#include "unit/packed/memory_file.h"

#include <random>
#include <string>
#include <utility>

using namespace qx;
using namespace qxtest;

namespace
{

// Of matches short and long, so that each of zlib's parameters shows in what comes out.
std::string Sample(std::size_t size)
{
    std::mt19937 random(5);
    std::string data(size, '\0');
    for (char& octet : data)
    {
        const unsigned letters = random() % 8 == 0 ? 20 : 3;
        octet = static_cast<char>('a' + random() % letters);
    }
    return data;
}

} // namespace

TEST(DeflateStream, EachModeGivesTheBytesOfZlib)
{
    constexpr struct
    {
        int mode, level, memoryLevel, strategy;
    } rows[] = {{1, 1, 8, 0}, {2, -1, 8, 0}, {3, 9, 8, 0}, {4, 9, 9, 1}, {5, 9, 9, 0}, {6, 1, 9, 1}, {7, 1, 7, 0},
        {8, -1, 8, 0}};
    const std::string data = Sample(1'100'000); // more than one chunk
    for (const auto& [mode, level, memoryLevel, strategy] : rows)
    {
        MemoryFile source(data), packed, unpacked;
        std::uint32_t crc = 1;
        EXPECT_EQ(DeflateStream(packed, source, mode, &crc, -1), Z_STREAM_END);
        EXPECT_EQ(crc, crc32(0, reinterpret_cast<const Bytef*>(data.data()), static_cast<uInt>(data.size())));
        EXPECT_TRUE(packed.Bytes() == DeflatedByZlib(data, level, -15, memoryLevel, strategy)) << mode;
        packed.Seek(0);
        EXPECT_EQ(InflateStream(unpacked, packed, -1), 0);
        EXPECT_TRUE(unpacked.Bytes() == data) << mode;
    }
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

    for (const auto& [from, size] : {std::pair<clsFile*, int>(&closed, -1), std::pair<clsFile*, int>(&packed, -2)})
    {
        EXPECT_EQ(DeflateStream(target, *from, 1, nullptr, size), Z_DATA_ERROR);
        EXPECT_EQ(InflateStream(target, *from, size), Z_DATA_ERROR);
    }
}
