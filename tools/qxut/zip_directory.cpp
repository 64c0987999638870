#include "zip_directory.h"

#include "failure.h"
#include "regular_file.h"
#include "text.h"

#include <minizip/unzip.h>
#include <zlib.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string_view>
#include <utility>

namespace qxut
{

namespace
{

constexpr std::uint64_t kLargest32 = 0xFFFFFFFF;
constexpr std::uint16_t kZip64Field = 0x0001;
constexpr std::uint16_t kUnicodePathField = 0x7075;
constexpr std::size_t kUnicodePathHead = 5; // version, and CRC-32 of the name that the field replaces
constexpr unsigned kFlagEncrypted = 0x0001;
constexpr unsigned kFlagUtf8 = 0x0800;
constexpr unsigned kMadeOnUnix = 3;
constexpr unsigned kMadeOnDarwin = 19;

// Code page 437, from 128 on.
constexpr QXWCHAR kUpperHalf[] = {0xC7, 0xFC, 0xE9, 0xE2, 0xE4, 0xE0, 0xE5, 0xE7, 0xEA, 0xEB, 0xE8, 0xEF, 0xEE, 0xEC,
    0xC4, 0xC5, 0xC9, 0xE6, 0xC6, 0xF4, 0xF6, 0xF2, 0xFB, 0xF9, 0xFF, 0xD6, 0xDC, 0xA2, 0xA3, 0xA5, 0x20A7, 0x192, 0xE1,
    0xED, 0xF3, 0xFA, 0xF1, 0xD1, 0xAA, 0xBA, 0xBF, 0x2310, 0xAC, 0xBD, 0xBC, 0xA1, 0xAB, 0xBB, 0x2591, 0x2592, 0x2593,
    0x2502, 0x2524, 0x2561, 0x2562, 0x2556, 0x2555, 0x2563, 0x2551, 0x2557, 0x255D, 0x255C, 0x255B, 0x2510, 0x2514,
    0x2534, 0x252C, 0x251C, 0x2500, 0x253C, 0x255E, 0x255F, 0x255A, 0x2554, 0x2569, 0x2566, 0x2560, 0x2550, 0x256C,
    0x2567, 0x2568, 0x2564, 0x2565, 0x2559, 0x2558, 0x2552, 0x2553, 0x256B, 0x256A, 0x2518, 0x250C, 0x2588, 0x2584,
    0x258C, 0x2590, 0x2580, 0x3B1, 0xDF, 0x393, 0x3C0, 0x3A3, 0x3C3, 0xB5, 0x3C4, 0x3A6, 0x398, 0x3A9, 0x3B4, 0x221E,
    0x3C6, 0x3B5, 0x2229, 0x2261, 0xB1, 0x2265, 0x2264, 0x2320, 0x2321, 0xF7, 0x2248, 0xB0, 0x2219, 0xB7, 0x221A,
    0x207F, 0xB2, 0x25A0, 0xA0};
static_assert(std::size(kUpperHalf) == 128);

struct CloseArchive
{
    void operator()(void* archive) const { unzClose(archive); }
};
using Archive = std::unique_ptr<void, CloseArchive>;

std::string_view Field(std::string_view extra, std::uint16_t id)
{
    const auto number = [&](std::size_t at)
    {
        return static_cast<unsigned>(
            static_cast<unsigned char>(extra[at]) | static_cast<unsigned char>(extra[at + 1]) << 8);
    };
    while (extra.size() >= 4 && number(2) <= extra.size() - 4)
    {
        if (number(0) == id)
            return extra.substr(4, number(2));
        extra.remove_prefix(4 + number(2));
    }
    return {};
}

uLong Checksum(std::string_view bytes)
{
    return crc32(0, reinterpret_cast<const Bytef*>(bytes.data()), static_cast<uInt>(bytes.size()));
}

bool IsUtf8(std::string_view bytes)
{
    return Utf8(WideText(bytes)) == bytes;
}

// Decodes a name by the rules of UtilExtractZip.
std::string Name(std::string_view bytes, const unz_file_info64& info, std::string_view extra)
{
    if (info.flag & kFlagUtf8)
        return std::string(bytes);
    const std::string_view path = Field(extra, kUnicodePathField);
    if (path.size() > kUnicodePathHead && path[0] == 1)
    {
        std::uint32_t crc = 0;
        std::memcpy(&crc, path.data() + 1, sizeof crc);
        if (crc == Checksum(bytes))
            return std::string(path.substr(kUnicodePathHead));
    }
    const auto system = static_cast<unsigned>(info.version >> 8);
    if ((system == kMadeOnUnix || system == kMadeOnDarwin) && IsUtf8(bytes))
        return std::string(bytes);
    std::vector<QXWCHAR> wide;
    for (const char c : bytes)
    {
        const auto byte = static_cast<unsigned char>(c);
        wide.push_back(byte < 128 ? static_cast<QXWCHAR>(byte) : kUpperHalf[byte - 128]);
    }
    wide.push_back(0);
    return Utf8(wide.data());
}

std::string TimeText(const tm_unz& time)
{
    char text[64];
    std::snprintf(text, sizeof text, "%04u-%02u-%02u %02u:%02u:%02u", time.tm_year, time.tm_mon + 1, time.tm_mday,
        time.tm_hour, time.tm_min, time.tm_sec);
    return text;
}

[[noreturn]] void FailDamaged(const std::string& path)
{
    throw Failure(kMalformed, path + ": the central directory of the archive is damaged");
}

ZipEntry Entry(unzFile archive, const std::string& path)
{
    unz_file_info64 info{};
    std::string name(0xFFFF, '\0');
    std::string extra(0xFFFF, '\0');
    if (unzGetCurrentFileInfo64(archive, &info, name.data(), static_cast<uLong>(name.size()), extra.data(),
            static_cast<uLong>(extra.size()), nullptr, 0) != UNZ_OK)
        FailDamaged(path);
    name.resize(info.size_filename);
    extra.resize(info.size_file_extra);

    ZipEntry entry;
    entry.name = Name(name, info, extra);
    entry.size = info.uncompressed_size;
    entry.packed = info.compressed_size;
    // Some versions of minizip don't read the ZIP64 field. It contains the sizes in this order, but only those that
    // exceed 32 bits.
    std::string_view field = Field(extra, kZip64Field);
    for (std::uint64_t* size : {&entry.size, &entry.packed})
        if (*size == kLargest32 && field.size() >= sizeof *size)
        {
            std::memcpy(size, field.data(), sizeof *size);
            field.remove_prefix(sizeof *size);
        }
    entry.method = static_cast<unsigned>(info.compression_method);
    const auto system = static_cast<unsigned>(info.version >> 8);
    const bool isFromPosix = system == kMadeOnUnix || system == kMadeOnDarwin;
    entry.isFolder = !entry.name.empty() && (entry.name.back() == '/' || (!isFromPosix && entry.name.back() == '\\'));
    entry.isEncrypted = (info.flag & kFlagEncrypted) != 0;
    entry.modified = TimeText(info.tmu_date);
    return entry;
}

// Detects an archive that consists of an end record only, which minizip rejects.
bool IsEmptyArchive(std::FILE* file)
{
    char end[22] = {};
    const bool isEmpty =
        std::fread(end, 1, sizeof end, file) == sizeof end && std::memcmp(end, "PK\5\6\0\0\0\0\0\0\0\0", 12) == 0;
    std::rewind(file);
    return isEmpty;
}

// Opens the archive in a file that is open already, so that its path may contain any characters on both targets.
Archive OpenArchive(RegularFile file)
{
    zlib_filefunc64_def functions{};
    fill_fopen64_filefunc(&functions);
    functions.opaque = file.release();
    functions.zopen64_file = [](voidpf opened, const void*, int)
    {
        return opened;
    };
    return Archive(unzOpen2_64("", &functions));
}

} // namespace

std::vector<ZipEntry> ReadZipDirectory(const std::string& path)
{
    const std::filesystem::path native = std::filesystem::u8path(path);
    std::error_code error;
    if (!std::filesystem::exists(native, error))
        throw Failure(kCannotRead, path + ": no such file");
    if (std::filesystem::is_directory(native, error))
        throw Failure(kCannotRead, path + ": is a folder");
    if (!std::filesystem::is_regular_file(native, error))
        throw Failure(kCannotRead, path + ": is a pipe or a device, not a file");
    RegularFile file = OpenRegularFile(native);
    if (!file)
        throw Failure(kCannotRead, path + ": cannot open the file");
    std::vector<ZipEntry> entries;
    if (IsEmptyArchive(file.get()))
        return entries;

    const Archive archive = OpenArchive(std::move(file));
    unz_global_info64 info{};
    if (!archive || unzGetGlobalInfo64(archive.get(), &info) != UNZ_OK)
        throw Failure(kMalformed, path + ": is not a ZIP archive");
    for (std::uint64_t i = 0; i < info.number_entry; ++i)
    {
        if ((i == 0 ? unzGoToFirstFile(archive.get()) : unzGoToNextFile(archive.get())) != UNZ_OK)
            FailDamaged(path);
        entries.push_back(Entry(archive.get(), path));
    }
    return entries;
}

} // namespace qxut
