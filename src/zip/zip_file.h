// Writes ZIP archives. Adding a member compresses it into a temporary file that all members share, so that the number
// of open files doesn't grow. The archive is written only at the end, when all sizes and checksums are known.
#pragma once

#include "containers/slist.h"
#include "core/packing/byte_block.h"
#include "core/text/string.h"
#include "files/file.h"
#include "files/temp_files.h"
#include "zip/records.h"

#include <windows.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace qx
{

// A member: its header in file layout, with its variable fields.
struct clsZIPFileEntry
{
    scZIPLocalHeader header{};
    std::string name;              // in the encoding that the flags declare
    std::string extra;             // always empty
    std::int64_t dataPosition = 0; // of the compressed data in the temporary file
    std::uint16_t versionMadeBy = kZipVersionMadeBy;
    std::uint32_t attributes = 0; // the external attributes
    String storedName;
    String comment;
    std::uint32_t offset = 0; // of the header in the archive, once written
};

// A ZIP archive that is being written. Not thread-safe.
class clsZIPFile
{
public:
    // Result codes, shared with the exported functions.
    static constexpr int kOk = 0;
    static constexpr int kCannotOpen = -1;
    static constexpr int kCannotStore = -2;
    static constexpr int kCannotWrite = -3;

    static constexpr std::uint32_t kSubfolders = 1; // flag of AddList
    // Flags of AddFile.
    static constexpr std::uint32_t kModes = 2;  // stores permissions, and names in UTF-8, as archivers on Unix do
    static constexpr std::uint32_t kLinks = 4;  // with kModes: stores links that stay inside the archive as links
    static constexpr std::uint32_t kFolder = 8; // the path is a folder: adds its entry, without contents

    // Creates the archive, which stays empty until Close. IsOpen returns false if it couldn't be created.
    clsZIPFile(const String& fileName, const String& comment);
    clsZIPFile(const clsZIPFile&) = delete;
    clsZIPFile& operator=(const clsZIPFile&) = delete;
    ~clsZIPFile();

    bool IsOpen() const { return _archive.IsOpen(); }

    // Adds a file, under its path if `storedName` is empty. With kModes the name is stored as it is, without removing a
    // drive. Returns kOk, kCannotOpen or kCannotStore, and sets the failure text.
    int AddFile(const String& path, const String& storedName, const String& comment, std::uint32_t flags = 0);

    // Adds an entry for a folder, without its contents.
    void AddDirectory(const String& path, const String& storedName, const WIN32_FIND_DATAW& data);

    // Adds the files in the folder `relative` below `base` that match the pattern, with names relative to `base`. With
    // kSubfolders, also adds everything in the subfolders, regardless of the pattern. Files that can't be added are
    // skipped; the result is the code of the first failure, and the failure text names that file.
    int AddList(const String& base, const String& relative, const String& pattern, std::uint32_t flags);

    // Writes the archive. Returns kOk or kCannotWrite. On failure, a partial archive remains.
    int Close();

private:
    friend struct ZIPFileTestAccess;

    class clsIndexEntryList;

    int Fail(int code, const String& text) const;
    int AddFolder(std::unique_ptr<clsZIPFileEntry> entry, const String& path, bool hasModes);
    bool Store(clsZIPFileEntry& entry, clsFile& source, const String& path);
    bool StoreLink(clsZIPFileEntry& entry, const std::string& target);
    bool AddLink(const String& path, clsZIPFileEntry& entry);
    clsFile& Spool();
    void Append(std::unique_ptr<clsZIPFileEntry> entry);
    int ListFiles(const String& folder, const String& relative, const String& pattern);
    bool CopyData(const clsZIPFileEntry& entry);
    bool Write(const void* bytes, std::size_t count);
    bool WriteMember(clsZIPFileEntry& entry);
    bool WriteDirectory(const clsIndexEntryList& index);
    bool WriteEnd(const clsIndexEntryList& index, std::uint32_t directoryOffset);
    bool LogWriteError(int place) const;

    WCPtrSList<clsZIPFileEntry> _entries; // in insertion order; owned by this object
    clsFileRW _archive;
    String _comment;
    std::optional<clsFileRWTemp> _spool; // the compressed data of all members, created for the first one
    std::int64_t _spoolEnd = 0;          // the end of the last member
    ByteBlock _buffer;                   // for copying
};

} // namespace qx
