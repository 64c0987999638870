// Raw deflate (RFC 1951) from one file object to another, in bounded memory.
#pragma once

#include <cstdint>
#include <limits>

namespace qx
{

class clsFile;

// Where the compressed data ends, relative to the end of the bytes that were to be decompressed.
enum class DeflateEnd
{
    Missing, // the data are cut off or damaged
    Exact,
    BeforeRest // other bytes follow the data
};

// Compresses `size` bytes from the source's current position (-1: up to its end), writes them at the target's position
// and truncates the target after them. `mode` selects level, memory use and strategy: 1 and 3 to 7 are defined, all
// other values select zlib's defaults. If `crc` isn't null, it receives the CRC-32 of the source bytes. Returns zlib's
// last code: 1 on success, a negative value on failure.
int DeflateStream(clsFile& target, clsFile& source, int mode, std::uint32_t* crc, std::int64_t size);

// Decompresses `size` bytes of raw deflate data in the same way. Returns 0 on success, a negative value on failure. A
// result of more than `limit` bytes is a failure too, because a few bytes can expand to a huge amount. Truncated data
// and bytes after the data aren't failures; `end`, if not null, receives what was found.
int InflateStream(clsFile& target, clsFile& source, std::int64_t size,
    std::int64_t limit = std::numeric_limits<std::int64_t>::max(), DeflateEnd* end = nullptr);

} // namespace qx
