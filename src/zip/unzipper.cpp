#include "zip/unzipper.h"

#include "zip/dos_time.h"
#include "zip/exception.h"
#include "zip/member_name.h"
#include "zip/names.h"
#include "zip/records.h"

#include <minizip/unzip.h>

#include <cstring>
#include <string_view>

namespace qx
{
namespace
{

constexpr std::size_t kLongestField = 0xFFFF;

constexpr std::uint16_t kUnixTimesId = 0x5455;
constexpr std::uint16_t kZip64Id = 0x0001;

// Sets `time` to the exact UTC time from the extra field, if there is one, otherwise to the time in the entry. Returns
// false if the entry's time is invalid.
bool TimeOfMember(const unz_file_info64& info, std::string_view extra, FILETIME& time)
{
    constexpr std::int64_t kSecondsFrom1601To1970 = 11'644'473'600;
    constexpr std::int64_t kUnitsPerSecond = 10'000'000;
    const std::string_view field = FindExtraField(extra, kUnixTimesId);
    if (field.size() >= 5 && (field[0] & 1) != 0)
    {
        std::uint32_t seconds = 0;
        for (std::size_t i = 4; i > 0; --i)
            seconds = seconds << 8 | static_cast<unsigned char>(field[i]);
        const std::int64_t units = (static_cast<std::int32_t>(seconds) + kSecondsFrom1601To1970) * kUnitsPerSecond;
        time = {static_cast<DWORD>(units), static_cast<DWORD>(units >> 32)};
        return true;
    }
    const auto stamp = static_cast<std::uint32_t>(info.dosDate);
    return FileTimeOf({static_cast<std::uint16_t>(stamp >> 16), static_cast<std::uint16_t>(stamp)}, time);
}

// Takes the values that don't fit in 32 bits from the ZIP64 field. The field contains only these values, in this order.
void TakeZIP64(scZIPMember& member, std::string_view field)
{
    for (std::uint64_t* value : {&member.size, &member.packedSize, &member.headerOffset})
        if (*value == kZipLargestSize && field.size() >= sizeof *value)
        {
            std::memcpy(value, field.data(), sizeof *value);
            field.remove_prefix(sizeof *value);
        }
}

} // namespace

clsZIPException::clsZIPException(const String& text) : _text(EncodedText(text, kZipUtf8CodePage)) {}

clsZIPException::clsZIPException(const wchar_t* format, const String& name)
    : clsZIPException(String(String::kFormatted, format, name.Text()))
{
}

Unzipper::Unzipper(const String& archivePath) : _input(archivePath)
{
    zlib_filefunc64_def functions = _input.Functions();
    if (_input.IsOpen())
        _archive = unzOpen2_64("", &functions);
}

void Unzipper::Close()
{
    if (_archive)
        unzClose(_archive);
    _archive = nullptr;
}

// minizip treats fields beyond the end of the file as zeros, so the size must fit too.
bool Unzipper::IsEmptyArchive()
{
    scZIPEndRecord end;
    return _input.IsOpen() && _input.ReadAt(0, &end, sizeof end) && end.signature == kZipEndSignature &&
           end.entries == 0 && _input.Size() == sizeof end + std::uint64_t{end.commentLength};
}

bool Unzipper::HasMembers() const
{
    unz_global_info64 info{};
    return unzGetGlobalInfo64(_archive, &info) == UNZ_OK && info.number_entry != 0;
}

bool Unzipper::First()
{
    unz_global_info64 info{};
    unzGetGlobalInfo64(_archive, &info);
    _left = info.number_entry;
    if (_left == 0)
        return false;
    if (unzGoToFirstFile(_archive) != UNZ_OK)
        throw clsZIPException(L"The directory of the zip file is damaged");
    ReadMember();
    return true;
}

// Counts the members here, because minizip doesn't detect the end of an archive with exactly 65,535 members.
bool Unzipper::Next()
{
    if (--_left == 0)
        return false;
    if (unzGoToNextFile(_archive) != UNZ_OK)
        throw clsZIPException(L"The directory of the zip file is damaged");
    ReadMember();
    return true;
}

// Reads the fixed part of the record once more, because minizip doesn't return the offset of the member.
void Unzipper::ReadMember()
{
    unz_file_info64 info{};
    _name.resize(kLongestField);
    _extra.resize(kLongestField);
    _input.WatchSeeks();
    scZIPCentralHeader header;
    if (unzGetCurrentFileInfo64(_archive, &info, _name.data(), static_cast<uLong>(_name.size()), _extra.data(),
            static_cast<uLong>(_extra.size()), nullptr, 0) != UNZ_OK ||
        !_input.FirstSeek() || !_input.ReadAt(*_input.FirstSeek(), &header, sizeof header) ||
        header.signature != kZipCentralSignature)
        throw clsZIPException(L"The directory of the zip file is damaged");
    _prefix = *_input.FirstSeek() - unzGetOffset64(_archive);
    const std::string_view name = std::string_view(_name).substr(0, header.nameLength);
    const std::string_view extra = std::string_view(_extra).substr(0, header.extraLength);
    const unsigned mode = header.externalAttributes >> 16;
    _member = {};
    _member.name = MemberName(name, header.flags, header.versionMadeBy, extra);
    _member.isFromPosix = IsMadeOnPosix(header.versionMadeBy);
    _member.isFolder =
        _member.name.View().ends_with(L'/') || (!_member.isFromPosix && _member.name.View().ends_with(L'\\'));
    _member.isLink = (mode & kZipModeType) == kZipModeLink;
    _member.isEncrypted = (header.flags & kZipFlagEncrypted) != 0;
    _member.method = header.method;
    _member.size = header.uncompressedSize;
    _member.packedSize = header.compressedSize;
    _member.crc = header.crc;
    _member.headerOffset = header.localHeaderOffset;
    if (_member.isFromPosix && (mode & kZipModePermissions) != 0)
        _member.mode = mode & kZipModePermissions;
    TakeZIP64(_member, FindExtraField(extra, kZip64Id));
    _member.hasTime = TimeOfMember(info, extra, _member.time);
}

void Unzipper::CheckMember() const
{
    if (_member.isEncrypted)
        throw clsZIPException(L"The zip entry '%s' is encrypted", _member.name);
    if (_member.method != kZipMethodStored && _member.method != kZipMethodDeflate)
        throw clsZIPException(
            String(String::kFormatted, L"The zip entry '%s' is packed by method %u, which can't be unpacked",
                _member.name.Text(), _member.method));
}

// The sizes in the local header are ignored: the sizes in the directory are no less reliable, and decompressing the
// data shows whether they are right.
std::uint64_t Unzipper::DataPosition()
{
    const std::uint64_t position = _member.headerOffset + _prefix;
    scZIPLocalHeader header;
    if (position > _input.Size() || !_input.ReadAt(position, &header, sizeof header) ||
        header.signature != kZipLocalSignature || header.method != _member.method)
        throw clsZIPException(L"The zip entry '%s' is damaged", _member.name);
    return position + sizeof header + header.nameLength + header.extraLength;
}

bool Unzipper::CopyData(const std::function<bool(const unsigned char* bytes, std::size_t count)>& sink)
{
    const scMemberData data{
        DataPosition(), _member.packedSize, _member.size, _member.crc, _member.method == kZipMethodDeflate};
    switch (CopyMemberData(_input, data, sink))
    {
    case MemberDataResult::Whole:
        return true;
    case MemberDataResult::NotTaken:
        return false;
    case MemberDataResult::WrongChecksum:
        throw clsZIPException(L"The zip entry '%s' is damaged: its checksum doesn't fit", _member.name);
    case MemberDataResult::Damaged:
        break;
    }
    throw clsZIPException(L"The zip entry '%s' is damaged", _member.name);
}

} // namespace qx
