#include "files/deflate_stream.h"

#include "core/debug_line.h"
#include "core/packing/byte_block.h"
#include "files/file.h"
#include "files/zlib_parameters.h"

#include <algorithm>
#include <memory>

namespace qx
{
namespace
{

constexpr std::uint32_t kChunkSize = 0x100000;

// The input and output buffers of one run. Memory use doesn't depend on the amount of data.
struct Chunks
{
    ByteBlock input{kChunkSize};
    ByteBlock output{kChunkSize};

    void OfferInput(z_stream& stream, std::uint32_t count)
    {
        stream.next_in = input.data();
        stream.avail_in = count;
    }

    void OfferOutput(z_stream& stream)
    {
        stream.next_out = output.data();
        stream.avail_out = kChunkSize;
    }

    // Writes the contents of the output buffer. Returns false if the write is incomplete.
    bool Flush(clsFile& target, const z_stream& stream)
    {
        const std::uint32_t made = kChunkSize - stream.avail_out;
        return target.Write(output.data(), made) == made;
    }
};

std::uint32_t NextChunk(std::int64_t remaining)
{
    return static_cast<std::uint32_t>(std::min<std::int64_t>(remaining, kChunkSize));
}

// Returns the number of bytes to process. Returns a negative value if the source isn't open or `size` is negative but
// not -1.
std::int64_t BytesToTake(clsFile& source, std::int64_t size)
{
    if (size != -1)
        return size;
    const std::int64_t end = source.GetSize();
    const std::int64_t position = source.Position();
    return end < 0 || position < 0 ? -1 : std::max<std::int64_t>(end - position, 0);
}

int DeflateChunks(z_stream& stream, clsFile& target, clsFile& source, std::uint32_t* crc, std::int64_t remaining)
{
    Chunks chunks;
    for (;;)
    {
        const std::uint32_t count = NextChunk(remaining);
        if (source.Read(chunks.input.data(), count) != count)
            return Z_DATA_ERROR;
        remaining -= count;
        if (crc && count != 0)
            *crc = static_cast<std::uint32_t>(crc32(*crc, chunks.input.data(), count));

        chunks.OfferInput(stream, count);
        int code;
        do
        {
            chunks.OfferOutput(stream);
            code = deflate(&stream, remaining == 0 ? Z_FINISH : Z_NO_FLUSH);
            // Without this check, data would be lost although the result reports success.
            if (!chunks.Flush(target, stream))
                return Z_BUF_ERROR;
        } while (stream.avail_out == 0);
        if (code == Z_STREAM_END || code < 0)
            return code;
    }
}

// Maps a result of inflate to the result of the run. The end of the stream is no failure.
int InflateFailure(int code)
{
    if (code == Z_DATA_ERROR || code == Z_MEM_ERROR)
        return code;
    return code == Z_NEED_DICT ? Z_DATA_ERROR : 0;
}

int InflateChunks(
    z_stream& stream, clsFile& target, clsFile& source, std::int64_t remaining, std::int64_t limit, DeflateEnd& end)
{
    Chunks chunks;
    int result = 0;
    int code = Z_OK;
    do
    {
        const std::uint32_t count = NextChunk(remaining);
        if (source.Read(chunks.input.data(), count) != count)
            return Z_DATA_ERROR;
        remaining -= count;

        chunks.OfferInput(stream, count);
        do
        {
            chunks.OfferOutput(stream);
            code = inflate(&stream, remaining == 0 ? Z_FINISH : Z_NO_FLUSH);
            const int failure = InflateFailure(code);
            limit -= kChunkSize - stream.avail_out;
            if (limit < 0 || !chunks.Flush(target, stream))
                return Z_BUF_ERROR;
            if (failure != 0)
                result = failure;
        } while (stream.avail_out == 0);
    } while (remaining > 0 && result == 0);
    if (code == Z_STREAM_END)
        end = stream.avail_in == 0 ? DeflateEnd::Exact : DeflateEnd::BeforeRest;
    return result;
}

// Releases the memory of the stream's state, also after an exception.
using StreamEnd = std::unique_ptr<z_stream, int (*)(z_stream*)>;

} // namespace

int DeflateStream(clsFile& target, clsFile& source, int mode, std::uint32_t* crc, std::int64_t size)
{
    if (crc)
        *crc = 0;
    const std::int64_t count = BytesToTake(source, size);
    if (count < 0)
        return Z_DATA_ERROR;
    const DeflateMode parameters = DeflateModeOf(mode);
    z_stream stream{};
    const int code = deflateInit2(
        &stream, parameters.level, Z_DEFLATED, kRawDeflateWindowBits, parameters.memoryLevel, parameters.strategy);
    if (code != Z_OK)
        return code;
    const StreamEnd end(&stream, deflateEnd);
    const int result = DeflateChunks(stream, target, source, crc, count);
    target.SetEOF();
    return result;
}

int InflateStream(clsFile& target, clsFile& source, std::int64_t size, std::int64_t limit, DeflateEnd* end)
{
    DeflateEnd found = DeflateEnd::Missing;
    if (end != nullptr)
        *end = found;
    const std::int64_t compressed = BytesToTake(source, size);
    if (compressed < 0)
        return Z_DATA_ERROR;
    // Reserves enough space for typical data before the first write. The end is set exactly afterwards.
    target.Reserve(target.GetSize() + compressed + 512);

    z_stream stream{};
    const int code = inflateInit2(&stream, kRawDeflateWindowBits);
    if (code != Z_OK)
    {
        DebugLine(L"ERR: ZLIB init error '%d'", code);
        return code;
    }
    const StreamEnd streamEnd(&stream, inflateEnd);
    const int result = InflateChunks(stream, target, source, compressed, limit, found);
    if (end != nullptr)
        *end = found;
    target.SetEOF();
    return result;
}

} // namespace qx
