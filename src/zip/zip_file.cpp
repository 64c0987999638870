#include "zip/zip_file.h"

#include "core/debug_line.h"
#include "files/deflate_stream.h"
#include "files/file_finder.h"
#include "files/path_separator.h"
#include "zip/dos_time.h"
#include "zip/folder_links.h"
#include "zip/names.h"

#include <memory>

namespace qx
{
namespace
{

constexpr int kZipDeflateMode = 8;

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

std::unique_ptr<clsZIPFileEntry> NewEntry(const String& path, const String& storedName, const String& comment)
{
    auto entry = std::make_unique<clsZIPFileEntry>();
    entry->storedName = StoredNameOf(path, storedName);
    entry->comment = comment;
    entry->header.signature = kZipLocalSignature;
    entry->header.versionNeeded = kZipVersionNeeded;
    return entry;
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
    header.versionMadeBy = kZipVersionMadeBy;
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
}

clsZIPFile::~clsZIPFile()
{
    for (clsZIPFileEntry* entry : _entries)
        std::unique_ptr<clsZIPFileEntry>(entry).reset();
}

int clsZIPFile::AddFile(const String& path, const String& storedName, const String& comment)
{
    clsFileRO source(path, FileAccess::Read, FileDisposition::OpenExisting, FileShare::Read, kFileData);
    if (!source.IsOpen())
        return kCannotOpen;
    std::unique_ptr<clsZIPFileEntry> entry = NewEntry(path, storedName, comment);
    SetName(*entry, entry->storedName, !IsOemText(entry->storedName) || !IsOemText(comment));
    if (!Store(*entry, source, path))
        return kCannotStore;
    SetTimeAndAttributes(*entry, source.GetHandle(), path);
    _entries.Append(entry.get());
    entry.release();
    return kOk;
}

// Compresses the source into the entry's temporary file and fills in method, checksum and sizes.
bool clsZIPFile::Store(clsZIPFileEntry& entry, clsFile& source, const String& path)
{
    const std::int64_t size = source.GetSize();
    if (size > kZipLargestSize)
    {
        DebugLine(L"ERR: source size > 4GB");
        return false;
    }
    std::uint32_t crc = 0;
    const int result =
        size < 0 ? static_cast<int>(size) : DeflateStream(entry.compressed, source, kZipDeflateMode, &crc, size);
    if (result < 0)
    {
        DebugLine(L"ERR while compressing file '%s': %d", path.Text(), result);
        return false;
    }
    const std::int64_t compressedSize = entry.compressed.GetSize();
    if (compressedSize > kZipLargestSize)
    {
        DebugLine(L"ERR: compressed size > 4GB");
        return false;
    }
    entry.compressed.Seek(0);
    entry.header.method = kZipMethodDeflate;
    entry.header.crc = crc;
    entry.header.compressedSize = static_cast<std::uint32_t>(compressedSize);
    entry.header.uncompressedSize = static_cast<std::uint32_t>(size);
    return true;
}

// Only the header contains the trailing slash that marks a folder.
void clsZIPFile::AddDirectory(const String& path, const String& storedName, const WIN32_FIND_DATAW& data)
{
    std::unique_ptr<clsZIPFileEntry> entry = NewEntry(path, storedName, String());
    SetName(*entry, entry->storedName + L"/", !IsOemText(entry->storedName));
    SetTime(*entry, DosTimeOf(data.ftLastWriteTime));
    entry->attributes = data.dwFileAttributes;
    _entries.Append(entry.get());
    entry.release();
}

void clsZIPFile::AddList(const String& base, const String& relative, const String& pattern, std::uint32_t flags)
{
    const String folder = Join(base, relative);
    for (FileFinder finder(Join(folder, pattern), false); finder.Next();)
        AddFile(Join(folder, finder.Name()), Join(relative, finder.Name()), String());
    if ((flags & kSubfolders) == 0)
        return;
    for (FileFinder finder(Join(folder, L"*.*"), true); finder.Next();)
    {
        const String subfolder = Join(relative, finder.Name());
        AddDirectory(Join(base, finder.Name()), subfolder, finder.Data());
        const bool isLink = (finder.Data().dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
        if (!isLink || !LeadsBack(Join(folder, finder.Name()), folder))
            AddList(base, subfolder, L"*.*", flags);
    }
}

int clsZIPFile::Close()
{
    // The entry counts have 16 bits. A count that wraps around would hide most of the entries.
    if (_entries.Count() > kZipMostEntries)
    {
        DebugLine(L"ERR: more than 65535 entries in ZIP file '%s'", _archive.GetName().Text());
        return kCannotWrite;
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
        return kCannotWrite;
    }
    return kOk;
}

bool clsZIPFile::WriteMember(clsZIPFileEntry& entry)
{
    entry.offset = static_cast<std::uint32_t>(_archive.Tell());
    if (!Write(&entry.header, sizeof entry.header) || !Write(entry.name.data(), entry.name.size()) ||
        !Write(entry.extra.data(), entry.extra.size()))
        return LogWriteError(1);
    return (_archive.IsOpen() && _archive.CopyFrom(entry.compressed)) || LogWriteError(2);
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
    return false;
}

} // namespace qx
