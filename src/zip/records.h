// The records of a ZIP archive in file layout (PKWARE's APPNOTE.TXT, without ZIP64). All numbers are little-endian,
// like both targets, so records are read and written without conversion.
#pragma once

#include <cstdint>

namespace qx
{

constexpr std::uint32_t kZipLocalSignature = 0x04034B50;
constexpr std::uint32_t kZipCentralSignature = 0x02014B50;
constexpr std::uint32_t kZipEndSignature = 0x06054B50;
constexpr std::uint32_t kZipDescriptorSignature = 0x08074B50;

constexpr std::uint16_t kZipVersionNeeded = 20;         // folders and deflate
constexpr std::uint16_t kZipVersionMadeBy = 0x0A14;     // 2.0, with NTFS attributes
constexpr std::uint16_t kZipVersionMadeByUnix = 0x0314; // 2.0, with modes of Unix

// In archives from Unix, the upper half of the external attributes contains the file mode. These constants are its
// parts.
constexpr std::uint32_t kZipModeType = 0170000;
constexpr std::uint32_t kZipModeFolder = 0040000;
constexpr std::uint32_t kZipModeFile = 0100000;
constexpr std::uint32_t kZipModeLink = 0120000;
constexpr std::uint32_t kZipModePermissions = 0777;

constexpr std::uint16_t kZipFlagDescriptor = 0x0008; // the sizes follow the data
constexpr std::uint16_t kZipFlagEncrypted = 0x0001;
constexpr std::uint16_t kZipFlagUtf8 = 0x0800; // applies to name and comment
constexpr std::uint16_t kZipMethodStored = 0;
constexpr std::uint16_t kZipMethodDeflate = 8;

// The limits of the format without ZIP64. Larger input is rejected.
constexpr std::int64_t kZipLargestSize = 0xFFFFFFFF;
constexpr std::size_t kZipMostEntries = 0xFFFF;
constexpr std::size_t kZipLongestText = 0xFFFF; // in bytes

#pragma pack(push, 1)

// Precedes each member. Followed by the name, the extra field and the data.
struct scZIPLocalHeader
{
    std::uint32_t signature;
    std::uint16_t versionNeeded;
    std::uint16_t flags;
    std::uint16_t method;
    std::uint16_t dosTime;
    std::uint16_t dosDate;
    std::uint32_t crc;
    std::uint32_t compressedSize;
    std::uint32_t uncompressedSize;
    std::uint16_t nameLength;
    std::uint16_t extraLength;
};

// An entry of the central directory. Followed by the name, the extra field and the comment.
struct scZIPCentralHeader
{
    std::uint32_t signature;
    std::uint16_t versionMadeBy;
    std::uint16_t versionNeeded;
    std::uint16_t flags;
    std::uint16_t method;
    std::uint16_t dosTime;
    std::uint16_t dosDate;
    std::uint32_t crc;
    std::uint32_t compressedSize;
    std::uint32_t uncompressedSize;
    std::uint16_t nameLength;
    std::uint16_t extraLength;
    std::uint16_t commentLength;
    std::uint16_t diskStart;
    std::uint16_t internalAttributes;
    std::uint32_t externalAttributes;
    std::uint32_t localHeaderOffset;
};

// The end of the archive. Followed by the comment.
struct scZIPEndRecord
{
    std::uint32_t signature;
    std::uint16_t disk;
    std::uint16_t directoryDisk;
    std::uint16_t entriesOnDisk;
    std::uint16_t entries;
    std::uint32_t directorySize;
    std::uint32_t directoryOffset;
    std::uint16_t commentLength;
};

// Follows the data of a member whose sizes weren't known when its header was written.
struct scZIPDescriptor
{
    std::uint32_t signature;
    std::uint32_t crc;
    std::uint32_t compressedSize;
    std::uint32_t uncompressedSize;
};

#pragma pack(pop)

static_assert(sizeof(scZIPLocalHeader) == 30);
static_assert(sizeof(scZIPCentralHeader) == 46);
static_assert(sizeof(scZIPEndRecord) == 22);
static_assert(sizeof(scZIPDescriptor) == 16);

} // namespace qx
