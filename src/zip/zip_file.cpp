#include "zip/zip_file.h"

#include "core/debug_line.h"
#include "core/errors/failure_text.h"
#include "files/deflate_stream.h"
#include "files/file_finder.h"
#include "files/folder.h"
#include "files/path_separator.h"
#include "files/posix_files.h"
#include "zip/dos_time.h"
#include "zip/folder_links.h"
#include "zip/link_target.h"
#include "zip/names.h"

#include <zlib.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

namespace qx
{
namespace
{

constexpr int kZipDeflateMode = 8;
constexpr std::size_t kCopyBytes = 0x100000;

constexpr std::uint32_t kDosAttributes = 0x3F; // in the lower half of the external attributes

String Join(const String& a, const String& b)
{
    if (a.IsEmpty() || b.IsEmpty())
        return a.IsEmpty() ? b : a;
    String path = a;
    if (!EndsInPathSeparator(a.View()))
        path += PATH_SEPARATOR;
    path += b;
    return path;
}

// Cuts the name to the number of bytes that its 16-bit length field stores, so that name and header agree.
void SetName(clsZIPFileEntry& entry, const String& name, bool isUtf8)
{
    entry.header.flags = isUtf8 ? kZipFlagUtf8 : std::uint16_t{0};
    entry.name = EncodedText(name, isUtf8 ? kZipUtf8CodePage : kZipOemCodePage);
    entry.header.nameLength = static_cast<std::uint16_t>(entry.name.size());
    entry.name.resize(entry.header.nameLength);
}

void SetTime(clsZIPFileEntry& entry, const scDosTime& time)
{
    entry.header.dosTime = time.time;
    entry.header.dosDate = time.date;
}

void SetTimeAndAttributes(clsZIPFileEntry& entry, HANDLE source, const String& path)
{
    BY_HANDLE_FILE_INFORMATION info;
    const bool isKnown = GetFileInformationByHandle(source, &info) != FALSE;
    SetTime(entry, isKnown ? DosTimeOf(info.ftLastWriteTime) : DosTimeNow());
    entry.attributes = isKnown ? info.dwFileAttributes : GetFileAttributesW(path);
}

// Opens a source file. Its name isn't checked on systems that allow more characters in names than Windows.
clsFileRO OpenedSource(const String& path)
{
    if (!kHasPosixFiles)
        return clsFileRO(path, FileAccess::Read, FileDisposition::OpenExisting, FileShare::Read, kFileData);
    clsGenericHandleObjectAutoRelease file(
        path.IsEmpty() ? nullptr
                       : CreateFileW(path, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                             FILE_ATTRIBUTE_NORMAL | FILE_FLAG_SEQUENTIAL_SCAN, nullptr),
        true);
    if (file.IsValid() && GetFileType(file.Get()) != FILE_TYPE_DISK)
    {
        file.Release();
        SetLastError(ERROR_BAD_FILE_TYPE);
    }
    return clsFileRO(file.Detach());
}

// Stores name and comment unchanged and in UTF-8, as archivers on Unix do.
void SetPosixName(clsZIPFileEntry& entry, const String& name, const String& comment)
{
    const auto isAscii = [](wchar_t c)
    {
        return c < 0x80;
    };
    const std::wstring_view view = name.View();
    const std::wstring_view note = comment.View();
    const bool isPlain =
        std::all_of(view.begin(), view.end(), isAscii) && std::all_of(note.begin(), note.end(), isAscii);
    String unmasked = name;
    unmasked.Replace(kBackslashInName, L'\\');
    SetName(entry, unmasked, !isPlain);
    entry.versionMadeBy = kZipVersionMadeByUnix;
}

std::size_t DepthOf(const String& name)
{
    const std::wstring_view view = name.View();
    return static_cast<std::size_t>(std::count(view.begin(), view.end(), L'/'));
}

std::unique_ptr<clsZIPFileEntry> NewEntry(
    const String& path, const String& storedName, const String& comment, std::uint32_t flags)
{
    auto entry = std::make_unique<clsZIPFileEntry>();
    entry->storedName = StoredNameOf(path, storedName);
    if ((flags & clsZIPFile::kModes) != 0)
    {
        entry->storedName = storedName.IsEmpty() ? path : storedName;
        entry->storedName.Replace(L'\\', L'/');
    }
    entry->comment = comment;
    entry->header.signature = kZipLocalSignature;
    entry->header.versionNeeded = kZipVersionNeeded;
    return entry;
}

// Stores the type and permissions of a POSIX mode as archivers on Unix do, beside the DOS attributes.
void SetMode(clsZIPFileEntry& entry, std::uint32_t type, std::uint32_t mode)
{
    entry.attributes = (type | (mode & kZipModePermissions)) << 16 | (entry.attributes & kDosAttributes);
}

// Makes the entry of a folder. Only the name in the header gets the trailing slash; storedName doesn't.
std::unique_ptr<clsZIPFileEntry> NewFolderEntry(
    const String& path, const String& storedName, const WIN32_FIND_DATAW& data)
{
    std::unique_ptr<clsZIPFileEntry> entry = NewEntry(path, storedName, String(), 0);
    SetName(*entry, entry->storedName + L"/", !IsOemText(entry->storedName));
    SetTime(*entry, DosTimeOf(data.ftLastWriteTime));
    entry->attributes = data.dwFileAttributes;
    return entry;
}

// A folder of which AddList has stored nothing yet.
struct PendingFolder
{
    String relative;
    std::unique_ptr<clsZIPFileEntry> entry;
    bool isEntered; // false for a link that leads back
};

// Appends the subfolders in reverse order, so that the last element is the first one to store.
void FindSubfolders(const String& base, const String& relative, std::vector<PendingFolder>& pending)
{
    const String folder = Join(base, relative);
    const std::size_t first = pending.size();
    for (FileFinder finder(Join(folder, L"*.*"), true); finder.Next();)
    {
        const bool isLink = (finder.Data().dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
        const String name = Join(relative, finder.Name());
        pending.push_back({name, NewFolderEntry(Join(base, finder.Name()), name, finder.Data()),
            !isLink || !LeadsBack(Join(folder, finder.Name()), folder)});
    }
    std::reverse(pending.begin() + static_cast<std::ptrdiff_t>(first), pending.end());
}

// A record of the central directory in file layout, with its variable fields.
struct clsZIPIndexEntry
{
    explicit clsZIPIndexEntry(const clsZIPFileEntry& entry);

    scZIPCentralHeader header{};
    std::string name;
    std::string extra;
    std::string comment;
};

clsZIPIndexEntry::clsZIPIndexEntry(const clsZIPFileEntry& entry)
    : name(entry.name),
      extra(entry.extra),
      comment(EncodedText(entry.comment, entry.header.flags & kZipFlagUtf8 ? kZipUtf8CodePage : kZipOemCodePage))
{
    if (comment.size() > kZipLongestText)
        comment.resize(kZipLongestText);
    header.signature = kZipCentralSignature;
    header.versionMadeBy = entry.versionMadeBy;
    header.versionNeeded = entry.header.versionNeeded;
    header.flags = entry.header.flags;
    header.method = entry.header.method;
    header.dosTime = entry.header.dosTime;
    header.dosDate = entry.header.dosDate;
    header.crc = entry.header.crc;
    header.compressedSize = entry.header.compressedSize;
    header.uncompressedSize = entry.header.uncompressedSize;
    header.nameLength = entry.header.nameLength;
    header.extraLength = entry.header.extraLength;
    header.commentLength = static_cast<std::uint16_t>(comment.size());
    header.externalAttributes = entry.attributes;
    header.localHeaderOffset = entry.offset;
}

} // namespace

class clsZIPFile::clsIndexEntryList : public WCValSList<clsZIPIndexEntry>
{
public:
    std::size_t SizeInFile() const
    {
        std::size_t size = 0;
        for (const clsZIPIndexEntry& entry : *this)
            size += sizeof entry.header + entry.name.size() + entry.extra.size() + entry.comment.size();
        return size;
    }
};

clsZIPFile::clsZIPFile(const String& fileName, const String& comment)
    : _archive(fileName, FileAccess::ReadWrite, FileDisposition::CreateAlways, FileShare::None, kFileData),
      _comment(comment)
{
    if (_archive.IsOpen())
        _archive.SetEOF();
    else
        SetFailureText(String(String::kFormatted, L"%s: %s", fileName.Text(), _archive.GetErrorText().Text()));
}

clsZIPFile::~clsZIPFile()
{
    for (clsZIPFileEntry* entry : _entries)
        std::unique_ptr<clsZIPFileEntry>(entry).reset();
}

int clsZIPFile::Fail(int code, const String& text) const
{
    SetFailureText(text);
    return code;
}

int clsZIPFile::AddFile(const String& path, const String& storedName, const String& comment, std::uint32_t flags)
{
    std::unique_ptr<clsZIPFileEntry> entry = NewEntry(path, storedName, comment, flags);
    const bool hasModes = (flags & kModes) != 0;
    const bool isFolder = (flags & kFolder) != 0;
    const String name = isFolder ? entry->storedName + L"/" : entry->storedName;
    if (hasModes)
        SetPosixName(*entry, name, comment);
    else
        SetName(*entry, name, !IsOemText(name) || !IsOemText(comment));
    if (isFolder)
        return AddFolder(std::move(entry), path, hasModes);
    if (hasModes && (flags & kLinks) != 0 && AddLink(path, *entry))
    {
        Append(std::move(entry));
        return kOk;
    }

    clsFileRO source(OpenedSource(path));
    if (!source.IsOpen())
    {
        const DWORD error = GetLastError();
        const String reason = error == ERROR_BAD_FILE_TYPE ? String(L"is a pipe or a device, not a file")
                                                           : String::SystemErrorText(error);
        return Fail(kCannotOpen, String(String::kFormatted, L"%s: %s", path.Text(), reason.Text()));
    }
    if (!Store(*entry, source, path))
        return kCannotStore;
    SetTimeAndAttributes(*entry, source.GetHandle(), path);
    if (hasModes)
        SetMode(*entry, kZipModeFile, PosixModeOf(source.GetHandle()).value_or(0644));
    Append(std::move(entry));
    return kOk;
}

int clsZIPFile::AddFolder(std::unique_ptr<clsZIPFileEntry> entry, const String& path, bool hasModes)
{
    const clsFolder folder(path);
    if (!folder.IsOpen())
        return Fail(kCannotOpen,
            String(String::kFormatted, L"%s: %s", path.Text(), String::SystemErrorText(GetLastError()).Text()));
    SetTimeAndAttributes(*entry, folder.Handle(), path);
    if (hasModes)
        SetMode(*entry, kZipModeFolder, PosixModeOf(folder.Handle()).value_or(0755));
    Append(std::move(entry));
    return kOk;
}

// Returns false if the path isn't a link, or if the link leads out of the archive. The caller then stores the file that
// it leads to.
bool clsZIPFile::AddLink(const String& path, clsZIPFileEntry& entry)
{
    const std::optional<std::string> target = LinkTargetOf(path);
    if (!target || !StaysInside(*target, DepthOf(entry.storedName)) || !StoreLink(entry, *target))
        return false;
    WIN32_FIND_DATAW data{};
    const clsFindDataObjectAutoRelease find(FindFirstFileW(path, &data), true);
    SetTime(entry, find.IsValid() ? DosTimeOf(data.ftLastWriteTime) : DosTimeNow());
    entry.attributes = (kZipModeLink | kZipModePermissions) << 16;
    return true;
}

bool clsZIPFile::StoreLink(clsZIPFileEntry& entry, const std::string& target)
{
    clsFile& spool = Spool();
    entry.dataPosition = _spoolEnd;
    spool.Seek(_spoolEnd);
    if (spool.WriteBytes(target.data(), target.size()) != static_cast<std::int64_t>(target.size()))
        return false;
    const auto size = static_cast<std::uint32_t>(target.size());
    entry.header.method = kZipMethodStored;
    entry.header.crc = static_cast<std::uint32_t>(crc32(0, reinterpret_cast<const Bytef*>(target.data()), size));
    entry.header.compressedSize = entry.header.uncompressedSize = size;
    return true;
}

clsFile& clsZIPFile::Spool()
{
    if (!_spool)
        _spool.emplace(L"ZIP");
    return *_spool;
}

void clsZIPFile::Append(std::unique_ptr<clsZIPFileEntry> entry)
{
    _entries.Append(entry.get());
    _spoolEnd += entry.release()->header.compressedSize;
}

// Compresses the source to the end of the temporary file and sets the fields that result from that. If this fails, the
// next member overwrites the incomplete data.
bool clsZIPFile::Store(clsZIPFileEntry& entry, clsFile& source, const String& path)
{
    const auto fail = [&](const wchar_t* reason)
    {
        Fail(kCannotStore, String(String::kFormatted, L"%s: %s", path.Text(), reason));
        return false;
    };
    const std::int64_t size = source.GetSize();
    if (size > kZipLargestSize)
    {
        DebugLine(L"ERR: source size > 4GB");
        return fail(L"the file is larger than 4 GB");
    }
    std::uint32_t crc = 0;
    clsFile& spool = Spool();
    spool.Seek(_spoolEnd);
    const int result = size < 0 ? static_cast<int>(size) : DeflateStream(spool, source, kZipDeflateMode, &crc, size);
    if (result < 0)
    {
        DebugLine(L"ERR while compressing file '%s': %d", path.Text(), result);
        return fail(result == Z_BUF_ERROR ? L"the temporary file can't be written" : L"the file can't be read");
    }
    const std::int64_t compressedSize = spool.Position() - _spoolEnd;
    if (compressedSize > kZipLargestSize)
    {
        DebugLine(L"ERR: compressed size > 4GB");
        return fail(L"the compressed file is larger than 4 GB");
    }
    entry.dataPosition = _spoolEnd;
    entry.header.method = kZipMethodDeflate;
    entry.header.crc = crc;
    entry.header.compressedSize = static_cast<std::uint32_t>(compressedSize);
    entry.header.uncompressedSize = static_cast<std::uint32_t>(size);
    return true;
}

void clsZIPFile::AddDirectory(const String& path, const String& storedName, const WIN32_FIND_DATAW& data)
{
    Append(NewFolderEntry(path, storedName, data));
}

int clsZIPFile::ListFiles(const String& folder, const String& relative, const String& pattern)
{
    int result = kOk;
    String text;
    FileFinder finder(Join(folder, pattern), false);
    while (finder.Next())
    {
        const int added = AddFile(Join(folder, finder.Name()), Join(relative, finder.Name()), String());
        if (added == kOk || result != kOk)
            continue;
        result = added;
        text = FailureText();
    }
    if (result != kOk)
        return Fail(result, text); // set again, because a later failure has replaced it
    if (finder.Error() == ERROR_SUCCESS || finder.Error() == ERROR_FILE_NOT_FOUND)
        return kOk;
    return Fail(kCannotOpen,
        String(String::kFormatted, L"%s: %s", folder.Text(), String::SystemErrorText(finder.Error()).Text()));
}

// The pending folders are kept in a list rather than on the stack, because the tree determines how deep it is.
int clsZIPFile::AddList(const String& base, const String& relative, const String& pattern, std::uint32_t flags)
{
    int result = kOk;
    String text;
    const auto list = [&](const String& subfolder, const String& names)
    {
        const int listed = ListFiles(Join(base, subfolder), subfolder, names);
        if (listed == kOk || result != kOk)
            return;
        result = listed;
        text = FailureText();
    };
    std::vector<PendingFolder> pending;
    list(relative, pattern);
    if ((flags & kSubfolders) != 0)
        FindSubfolders(base, relative, pending);
    while (!pending.empty())
    {
        PendingFolder folder = std::move(pending.back());
        pending.pop_back();
        Append(std::move(folder.entry));
        if (!folder.isEntered)
            continue;
        list(folder.relative, L"*.*");
        FindSubfolders(base, folder.relative, pending);
    }
    return result == kOk ? kOk : Fail(result, text); // set again, because a later failure has replaced it
}

int clsZIPFile::Close()
{
    // The entry counts have 16 bits. A count that wraps around would hide most of the entries.
    if (_entries.Count() > kZipMostEntries)
    {
        DebugLine(L"ERR: more than 65535 entries in ZIP file '%s'", _archive.GetName().Text());
        return Fail(kCannotWrite, _archive.GetName() + L": more than 65535 entries");
    }
    for (clsZIPFileEntry* entry : _entries)
        if (!WriteMember(*entry))
            return kCannotWrite;

    const auto directoryOffset = static_cast<std::uint32_t>(_archive.Tell());
    clsIndexEntryList index;
    for (const clsZIPFileEntry* entry : _entries)
        index.Append(clsZIPIndexEntry(*entry));
    if (!WriteDirectory(index) || !WriteEnd(index, directoryOffset))
        return kCannotWrite;
    if (_archive.GetSize() > kZipLargestSize)
    {
        DebugLine(L"ERR: ZIP file size > 4GB");
        return Fail(kCannotWrite, _archive.GetName() + L": the archive is larger than 4 GB");
    }
    return kOk;
}

bool clsZIPFile::WriteMember(clsZIPFileEntry& entry)
{
    entry.offset = static_cast<std::uint32_t>(_archive.Tell());
    if (!Write(&entry.header, sizeof entry.header) || !Write(entry.name.data(), entry.name.size()) ||
        !Write(entry.extra.data(), entry.extra.size()))
        return LogWriteError(1);
    return (_archive.IsOpen() && CopyData(entry)) || LogWriteError(2);
}

// Copies the compressed data of a member from the temporary file to the archive.
bool clsZIPFile::CopyData(const clsZIPFileEntry& entry)
{
    if (entry.header.compressedSize == 0)
        return true;
    if (_buffer.size() == 0)
        _buffer = ByteBlock(kCopyBytes);
    Spool().Seek(entry.dataPosition);
    for (std::uint32_t left = entry.header.compressedSize; left > 0;)
    {
        const std::uint32_t part = std::min<std::uint32_t>(left, kCopyBytes);
        if (Spool().Read(_buffer.data(), part) != part || !Write(_buffer.data(), part))
            return false;
        left -= part;
    }
    return true;
}

bool clsZIPFile::WriteDirectory(const clsIndexEntryList& index)
{
    for (const clsZIPIndexEntry& entry : index)
        if (!Write(&entry.header, sizeof entry.header) || !Write(entry.name.data(), entry.name.size()) ||
            !Write(entry.extra.data(), entry.extra.size()) || !Write(entry.comment.data(), entry.comment.size()))
            return LogWriteError(4);
    return true;
}

bool clsZIPFile::WriteEnd(const clsIndexEntryList& index, std::uint32_t directoryOffset)
{
    const std::string comment = std::string(_comment.NarrowText()).substr(0, kZipLongestText);
    scZIPEndRecord end{};
    end.signature = kZipEndSignature;
    end.entriesOnDisk = end.entries = static_cast<std::uint16_t>(index.Count());
    end.directorySize = static_cast<std::uint32_t>(index.SizeInFile());
    end.directoryOffset = directoryOffset;
    end.commentLength = static_cast<std::uint16_t>(comment.size());
    return (Write(&end, sizeof end) && Write(comment.data(), comment.size())) || LogWriteError(5);
}

bool clsZIPFile::Write(const void* bytes, std::size_t count)
{
    return _archive.Write(bytes, count) == static_cast<std::int64_t>(count);
}

// Logs a write error and returns false, the result of the calling functions.
bool clsZIPFile::LogWriteError(int place) const
{
    DebugLine(L"ERR: write error file '%s' (%d)", _archive.GetName().Text(), place);
    SetFailureText(_archive.GetName() + L": the archive can't be written");
    return false;
}

} // namespace qx
