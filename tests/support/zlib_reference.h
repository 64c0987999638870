// Calls zlib directly with given parameters, for comparison with the library's compression.
#pragma once

#include <zlib.h>

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace qxtest
{

inline std::string DeflatedByZlib(std::string_view data, int level, int windowBits, int memoryLevel, int strategy)
{
    z_stream stream{};
    EXPECT_EQ(deflateInit2(&stream, level, Z_DEFLATED, windowBits, memoryLevel, strategy), Z_OK);
    std::string packed(deflateBound(&stream, static_cast<uLong>(data.size())), '\0');
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(data.data()));
    stream.avail_in = static_cast<uInt>(data.size());
    stream.next_out = reinterpret_cast<Bytef*>(packed.data());
    stream.avail_out = static_cast<uInt>(packed.size());
    EXPECT_EQ(deflate(&stream, Z_FINISH), Z_STREAM_END);
    packed.resize(stream.total_out);
    deflateEnd(&stream);
    return packed;
}

} // namespace qxtest
