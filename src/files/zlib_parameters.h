// Parameters and result codes of zlib.
#pragma once

#include <zlib.h>

#include <new>

namespace qx
{

// The parameters of a compression mode number.
struct DeflateMode
{
    int level;
    int memoryLevel;
    int strategy;
};

constexpr DeflateMode DeflateModeOf(int mode)
{
    switch (mode)
    {
    case 1:
        return {1, 8, Z_DEFAULT_STRATEGY};
    case 3:
        return {9, 8, Z_DEFAULT_STRATEGY};
    case 4:
        return {9, 9, Z_FILTERED};
    case 5:
        return {9, 9, Z_DEFAULT_STRATEGY};
    case 6:
        return {1, 9, Z_FILTERED};
    case 7:
        return {1, 7, Z_DEFAULT_STRATEGY};
    default:
        return {Z_DEFAULT_COMPRESSION, 8, Z_DEFAULT_STRATEGY};
    }
}

// Window bits for raw deflate data, without the header and checksum of a zlib stream.
constexpr int kRawDeflateWindowBits = -15;

// Returns the code of a zlib function. Throws std::bad_alloc if the function ran out of memory, because that would
// otherwise look like damaged data.
inline int UnlessOutOfMemory(int code)
{
    return code != Z_MEM_ERROR ? code : throw std::bad_alloc();
}

} // namespace qx
