#include "zip/member_data.h"

#include "core/packing/byte_block.h"
#include "files/zlib_parameters.h"
#include "zip/archive_input.h"

#include <zlib.h>

#include <algorithm>

namespace qx
{
namespace
{

constexpr std::uint64_t kFourGB = std::uint64_t{1} << 32;
constexpr std::size_t kInputBytes = 0x40000;
constexpr std::size_t kOutputBytes = 0x100000;
constexpr std::uint64_t kBestRatio = 1032; // of deflate

// Returns the largest size that is not above the bound and differs from the size in the directory by a multiple of 4
// GB, or the smallest such size if all are above.
std::uint64_t LargestCongruent(std::uint64_t told, std::uint64_t bound)
{
    const std::uint64_t smallest = told % kFourGB;
    return bound < smallest ? smallest : bound - (bound - smallest) % kFourGB;
}

bool IsCongruent(std::uint64_t count, std::uint64_t told)
{
    return (count - told) % kFourGB == 0;
}

using Sink = std::function<bool(const unsigned char*, std::size_t)>;

struct InflateStreamHolder
{
    InflateStreamHolder() : isReady(UnlessOutOfMemory(inflateInit2(&stream, kRawDeflateWindowBits)) == Z_OK) {}
    InflateStreamHolder(const InflateStreamHolder&) = delete;
    InflateStreamHolder& operator=(const InflateStreamHolder&) = delete;
    ~InflateStreamHolder()
    {
        if (isReady)
            inflateEnd(&stream);
    }

    z_stream stream{};
    const bool isReady;
};

// Counts the data on its way to the sink.
class Output
{
public:
    Output(const scMemberData& data, std::uint64_t available, const Sink& sink)
        : _data(data),
          _most(LargestCongruent(
              data.size, data.isDeflated ? LargestCongruent(data.packedSize, available) * kBestRatio : available)),
          _sink(sink)
    {
    }

    // Returns false if the data is longer than it may be, or if the sink refuses it.
    bool Take(const unsigned char* bytes, std::size_t count)
    {
        _count += count;
        if (_count > _most)
            return false;
        _crc = static_cast<std::uint32_t>(crc32(_crc, bytes, static_cast<uInt>(count)));
        return count == 0 || (_isTaken = _sink(bytes, count));
    }

    bool IsTaken() const { return _isTaken; }
    bool HasChecksum() const { return _crc == _data.crc; }
    bool HasSize() const { return IsCongruent(_count, _data.size); }

    MemberDataResult Failure() const { return _isTaken ? MemberDataResult::Damaged : MemberDataResult::NotTaken; }
    MemberDataResult Result() const
    {
        return !HasSize()      ? MemberDataResult::Damaged
               : HasChecksum() ? MemberDataResult::Whole
                               : MemberDataResult::WrongChecksum;
    }

private:
    const scMemberData& _data;
    const std::uint64_t _most; // the largest allowed number of bytes
    const Sink& _sink;
    std::uint64_t _count = 0;
    std::uint32_t _crc = 0;
    bool _isTaken = true;
};

MemberDataResult CopyStored(clsArchiveInput& input, const scMemberData& data, std::uint64_t available, Output& output)
{
    ByteBlock buffer(kOutputBytes);
    std::uint64_t count = 0;
    // Tries the smallest possible size first.
    for (std::uint64_t end = data.size % kFourGB; end <= available; end += kFourGB)
    {
        while (count < end)
        {
            const auto part = static_cast<std::size_t>(std::min<std::uint64_t>(end - count, buffer.size()));
            if (input.Read(buffer.data(), part) != part || !output.Take(buffer.data(), part))
                return output.Failure();
            count += part;
        }
        if (output.HasChecksum())
            return MemberDataResult::Whole;
    }
    return count == 0 && data.size % kFourGB != 0 ? MemberDataResult::Damaged : MemberDataResult::WrongChecksum;
}

MemberDataResult CopyDeflated(clsArchiveInput& input, const scMemberData& data, std::uint64_t available, Output& output)
{
    InflateStreamHolder holder;
    if (!holder.isReady)
        return MemberDataResult::Damaged;
    z_stream& stream = holder.stream;
    ByteBlock packed(kInputBytes);
    ByteBlock unpacked(kOutputBytes);
    const auto offerOutput = [&]
    {
        stream.next_out = unpacked.data();
        stream.avail_out = static_cast<uInt>(unpacked.size());
    };
    offerOutput();
    std::uint64_t limit = data.packedSize <= available ? data.packedSize : data.packedSize % kFourGB;
    std::uint64_t fed = 0;
    int code = Z_OK;
    while (code != Z_STREAM_END)
    {
        if (stream.avail_in == 0)
        {
            if (fed == limit && available - limit >= kFourGB)
                limit += kFourGB;
            const auto part =
                static_cast<std::size_t>(std::min({limit - fed, std::uint64_t{packed.size()}, available - fed}));
            if (input.Read(packed.data(), part) != part)
                return MemberDataResult::Damaged;
            fed += part;
            stream.next_in = packed.data();
            stream.avail_in = static_cast<uInt>(part);
        }
        const uInt room = stream.avail_out;
        const bool isStarved = stream.avail_in == 0;
        code = UnlessOutOfMemory(inflate(&stream, Z_NO_FLUSH));
        if ((code != Z_OK && code != Z_STREAM_END) || (isStarved && code == Z_OK && stream.avail_out == room))
            return MemberDataResult::Damaged;
        if (stream.avail_out == 0 || code == Z_STREAM_END)
        {
            if (!output.Take(unpacked.data(), unpacked.size() - stream.avail_out))
                return output.Failure();
            offerOutput();
        }
    }
    return IsCongruent(fed - stream.avail_in, data.packedSize) ? output.Result() : MemberDataResult::Damaged;
}

} // namespace

MemberDataResult CopyMemberData(clsArchiveInput& input, const scMemberData& data, const Sink& sink)
{
    if (data.position > input.Size())
        return MemberDataResult::Damaged;
    const std::uint64_t available = input.Size() - data.position;
    Output output(data, available, sink);
    if (data.size == 0 && data.packedSize == 0)
        return output.Result();
    if (data.packedSize % kFourGB > available)
        return MemberDataResult::Damaged;
    input.SetPosition(data.position);
    if (data.isDeflated)
        return CopyDeflated(input, data, available, output);
    return IsCongruent(data.size, data.packedSize) ? CopyStored(input, data, available, output)
                                                   : MemberDataResult::Damaged;
}

} // namespace qx
