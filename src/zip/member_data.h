// Copies the data of an entry: decompresses, counts and checks it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>

namespace qx
{

class clsArchiveInput;

struct scMemberData
{
    std::uint64_t position = 0; // of the data in the archive
    std::uint64_t packedSize = 0;
    std::uint64_t size = 0;
    std::uint32_t crc = 0;
    bool isDeflated = false;
};

enum class MemberDataResult
{
    Whole,
    Damaged,
    WrongChecksum,
    NotTaken // the sink returned false
};

// Passes the data to the sink in pieces of at most 1 MB. Programs without ZIP64 write sizes modulo 4 GB; such sizes are
// accepted if the data and its checksum are right. Never passes more bytes than the largest size that `packedSize`
// allows.
MemberDataResult CopyMemberData(clsArchiveInput& input, const scMemberData& data,
    const std::function<bool(const unsigned char* bytes, std::size_t count)>& sink);

} // namespace qx
