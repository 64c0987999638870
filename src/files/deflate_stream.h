// Raw deflate (RFC 1951) from one file object to another, in bounded memory.
#pragma once

#include <cstdint>
#include <limits>

namespace qx
{

class clsFile;

// Compresses `size` bytes from the source's position on (-1: all that follows) to the target's position, and cuts the
// target there. `mode` chooses level, memory and strategy: 1, 3 to 7, any other the defaults. `crc`, if given, gets
// the CRC-32 of the source's bytes. Result: zlib's last code, 1 on success, negative on failure.
int DeflateStream(clsFile& target, clsFile& source, int mode, std::uint32_t* crc, std::int64_t size);

// Decompresses `size` bytes of raw deflate data (-1: all that follows) likewise. Result: 0, negative on failure. Data
// of more than `limit` bytes are a failure too: a few bytes can stand for very many.
int InflateStream(
    clsFile& target, clsFile& source, std::int64_t size, std::int64_t limit = std::numeric_limits<std::int64_t>::max());

} // namespace qx
