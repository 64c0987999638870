#include "zip/unzipper.h"

#include "files/file.h"
#include "files/file_finder.h"
#include "files/path_separator.h"
#include "zip/dos_time.h"
#include "zip/exception.h"
#include "zip/member_name.h"
#include "zip/names.h"
#include "zip/records.h"

#include <minizip/unzip.h>
#include <zlib.h>

#include <algorithm>
#include <cstring>
#include <string_view>

namespace qx
{
namespace
{

constexpr std::size_t kBufferSize = 0x100000;
constexpr std::size_t kLongestField = 0xFFFF;

// For archives from Unix, the upper half of the external attributes contains the file mode.
constexpr unsigned kModeType = 0170000;
constexpr unsigned kModeLink = 0120000;

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

bool IsFolder(const String& path)
{
    const DWORD attributes = GetFileAttributesW(path);
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

// Creates the folder and its parents. Returns true if the folder exists afterwards.
bool MakeFolder(const String& path)
{
    if (path.IsEmpty() || IsFolder(path))
        return true;
    for (std::size_t i = 1; i < path.Length(); ++i)
        if (IsPathSeparator(path.CharAt(i)) && !IsPathSeparator(path.CharAt(i - 1)))
            CreateDirectoryW(path.Left(i), nullptr); // only the last result matters
    CreateDirectoryW(path, nullptr);
    return IsFolder(path);
}

// A file that is being extracted. Deleted by the destructor unless SetWhole was called.
class FileInTheMaking
{
public:
    explicit FileInTheMaking(const String& path)
        : _file(path, FileAccess::Write, FileDisposition::CreateAlways, FileShare::None, kFileData)
    {
    }
    ~FileInTheMaking()
    {
        const bool remove = _file.IsOpen() && !_isWhole;
        _file.Close();
        if (remove)
            DeleteFileW(_file.GetName());
    }
    FileInTheMaking(const FileInTheMaking&) = delete;
    FileInTheMaking& operator=(const FileInTheMaking&) = delete;

    clsFile& File() { return _file; }
    void SetWhole() { _isWhole = true; }

private:
    clsFileRW _file;
    bool _isWhole = false;
};

// Detects empty archives when minizip reports no entries. minizip rejects an archive that consists only of its end
// record, and treats fields beyond the end of the file as zeros.
bool IsEmptyArchive(const String& path)
{
    clsFileRO file(path, FileAccess::Read, FileDisposition::OpenExisting, FileShare::Read, kFileData);
    scZIPEndRecord end;
    return file.Read(&end, sizeof end) == sizeof end && end.signature == kZipEndSignature && end.entries == 0 &&
           file.GetSize() == static_cast<std::int64_t>(sizeof end) + end.commentLength;
}

// Returns the path as the C library expects it, or an empty text if the path has no exact 8-bit form.
std::string NarrowPath(const String& path)
{
    wchar_t* name = nullptr;
    const DWORD length = GetFullPathNameW(path, 0, nullptr, &name);
    String full;
    GetFullPathNameW(path, length, full.GetBuffer(std::size_t{length} + 1), &name);
    full.ReleaseBuffer();
    if (PATH_CODE_PAGE != 0)
        full.SetCodePage(PATH_CODE_PAGE);
    const std::string narrow = full.NarrowText();
    String back;
    back.SetCodePage(full.CodePage());
    back.Assign(narrow.c_str());
    return back == full ? narrow : std::string();
}

} // namespace

clsZIPException::clsZIPException(const String& text) : _text(EncodedText(text, kZipUtf8CodePage)) {}

clsZIPException::clsZIPException(const wchar_t* format, const String& name)
    : clsZIPException(String(String::kFormatted, format, name.Text()))
{
}

Unzipper::Unzipper(const char* archivePath) : _archive(unzOpen64(archivePath)), _buffer(kBufferSize) {}

void Unzipper::Close()
{
    if (_archive)
        unzClose(_archive);
    _archive = nullptr;
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

// Counts members itself, because minizip misses the end of archives with exactly 65,535 members.
bool Unzipper::Next()
{
    if (--_left == 0)
        return false;
    if (unzGoToNextFile(_archive) != UNZ_OK)
        throw clsZIPException(L"The directory of the zip file is damaged");
    ReadMember();
    return true;
}

void Unzipper::ReadMember()
{
    unz_file_info64 info{};
    _name.resize(kLongestField);
    _extra.resize(kLongestField);
    if (unzGetCurrentFileInfo64(_archive, &info, _name.data(), static_cast<uLong>(_name.size()), _extra.data(),
            static_cast<uLong>(_extra.size()), nullptr, 0) != UNZ_OK)
        throw clsZIPException(L"The directory of the zip file is damaged");
    const std::string_view name = std::string_view(_name).substr(0, info.size_filename);
    const std::string_view extra = std::string_view(_extra).substr(0, info.size_file_extra);
    const auto flags = static_cast<std::uint16_t>(info.flag);
    _member.name = MemberName(name, flags, static_cast<std::uint16_t>(info.version), extra);
    _member.isFolder = EndsInPathSeparator(_member.name.View());
    _member.isLink = (info.external_fa >> 16 & kModeType) == kModeLink;
    _member.isEncrypted = (flags & kZipFlagEncrypted) != 0;
    _member.method = static_cast<unsigned>(info.compression_method);
    _member.size = info.uncompressed_size;
    _member.crc = static_cast<std::uint32_t>(info.crc);
    // Some builds of minizip use a 32-bit long and ignore this field.
    const std::string_view sizes = FindExtraField(extra, kZip64Id);
    _member.hasOpenSize = info.uncompressed_size == kZipLargestSize && sizes.size() >= 8;
    if (_member.hasOpenSize)
        std::memcpy(&_member.size, sizes.data(), 8);
    _member.isZIP64 = !sizes.empty();
    _member.hasTime = TimeOfMember(info, extra, _member.time);
}

// Throws if the member can't be extracted, before anything is written.
void Unzipper::CheckMember() const
{
    if (_member.isLink)
        throw clsZIPException(L"The zip entry '%s' is a link, which may lead out of the folder", _member.name);
    if (_member.isFolder)
        return;
    if (_member.isEncrypted)
        throw clsZIPException(L"The zip entry '%s' is encrypted", _member.name);
    // For other methods, minizip would return the packed data as if they were the contents.
    if (_member.method != kZipMethodStored && _member.method != kZipMethodDeflate)
        throw clsZIPException(
            String(String::kFormatted, L"The zip entry '%s' is packed by method %u, which can't be unpacked",
                _member.name.Text(), _member.method));
}

void Unzipper::Extract(const String& folder)
{
    WCValSList<String> parts;
    switch (SplitMemberName(_member.name, parts))
    {
    case MemberPathError::LeadsOut:
        throw clsZIPException(L"The zip entry '%s' leads out of the folder", _member.name);
    case MemberPathError::NotAllowed:
        throw clsZIPException(L"The zip entry '%s' has a name that no file may have", _member.name);
    case MemberPathError::None:
        break;
    }
    CheckMember();
    if (_member.isFolder)
    {
        MakeFolders(folder, parts, parts.Count());
        return;
    }
    if (parts.IsEmpty())
        throw clsZIPException(L"The zip entry '%s' has no name", _member.name);
    String path = MakeFolders(folder, parts, parts.Count() - 1);
    path += *parts.Last();
    ExtractFile(path);
}

// Creates the folders of the first `count` parts. Returns the innermost folder with a trailing separator.
String Unzipper::MakeFolders(const String& folder, const WCValSList<String>& parts, std::size_t count)
{
    String path = folder;
    if (!path.IsEmpty() && !EndsInPathSeparator(path.View()))
        path += PATH_SEPARATOR;
    String last = path;
    for (const String& part : parts)
    {
        if (count-- == 0)
            break;
        last += part;
        last += PATH_SEPARATOR;
    }
    if (last == _folderThere && !last.IsEmpty())
        return last;

    if (!MakeFolder(folder))
        throw clsZIPException(L"The folder '%s' can't be made", folder);
    _isFolderNew = false;
    while (path.Length() < last.Length())
    {
        const std::size_t end = last.View().find(PATH_SEPARATOR, path.Length());
        const String made = last.Left(end);
        _isFolderNew = CreateDirectoryW(made, nullptr) != FALSE;
        if (!_isFolderNew && !IsFolder(made))
            throw clsZIPException(L"The folder of the zip entry '%s' can't be made", _member.name);
        if (!_isFolderNew && IsLink(made))
            throw clsZIPException(L"The zip entry '%s' leads through a link", _member.name);
        path = last.Left(end + 1);
    }
    _folderThere = last;
    return last;
}

void Unzipper::ExtractFile(const String& path)
{
    if (!_isFolderNew && IsLink(path))
        throw clsZIPException(L"The zip entry '%s' leads through a link", _member.name);
    if (unzOpenCurrentFile(_archive) != UNZ_OK)
        throw Damaged();
    struct CloseMember
    {
        ~CloseMember() { unzCloseCurrentFile(archive); }
        unzFile archive;
    } closeMember{_archive};

    FileInTheMaking target(path);
    if (!target.File().IsOpen())
        throw clsZIPException(String(String::kFormatted, L"The file of the zip entry '%s' can't be made: %s",
            _member.name.Text(), target.File().GetErrorText().Text()));
    CopyData(target.File());
    if (unzCloseCurrentFile(_archive) != UNZ_OK)
        throw clsZIPException(L"The zip entry '%s' is damaged: its checksum doesn't fit", _member.name);
    if (_member.hasTime)
        SetFileTime(target.File().GetHandle(), nullptr, nullptr, &_member.time);
    target.SetWhole();
}

// minizip verifies the checksum only if it knows the size.
void Unzipper::CopyData(clsFile& target)
{
    std::uint64_t left = _member.size;
    uLong crc = 0;
    while (left > 0)
    {
        const auto wanted = static_cast<unsigned>(std::min<std::uint64_t>(left, _buffer.size()));
        const int count = unzReadCurrentFile(_archive, _buffer.data(), wanted);
        if (count <= 0)
            throw Damaged();
        const auto bytes = static_cast<unsigned>(count);
        if (target.Write(_buffer.data(), bytes) != count)
            throw clsZIPException(L"The file of the zip entry '%s' can't be written", _member.name);
        if (_member.hasOpenSize)
            crc = crc32(crc, _buffer.data(), bytes);
        left -= bytes;
    }
    if (_member.hasOpenSize && crc != _member.crc)
        throw clsZIPException(L"The zip entry '%s' is damaged: its checksum doesn't fit", _member.name);
}

clsZIPException Unzipper::Damaged() const
{
    return clsZIPException(_member.isZIP64
                               ? L"The zip entry '%s' is damaged, or has more than 32 bits of data or in front"
                               : L"The zip entry '%s' is damaged",
        _member.name);
}

void ExtractZip(const String& archive, const String& folder)
{
    const std::string path = NarrowPath(archive);
    Unzipper unzipper(path.c_str());
    if (path.empty() || !unzipper.IsOpen() || !unzipper.First())
    {
        if (!IsEmptyArchive(archive))
            throw clsZIPException(L"Error loading zip file!");
        return;
    }
    do
        unzipper.Extract(folder);
    while (unzipper.Next());
}

} // namespace qx
