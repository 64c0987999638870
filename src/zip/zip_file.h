// Writes ZIP archives. Adding a member compresses it into a temporary file. The archive is written only at the end,
// when all sizes and checksums are known, so nothing is written twice.
#pragma once

#include "containers/slist.h"
#include "core/text/string.h"
#include "files/file.h"
#include "files/temp_files.h"
#include "zip/records.h"

#include <windows.h>

#include <cstdint>
#include <string>

namespace qx
{

// A member: its header in file layout, with its variable fields.
struct clsZIPFileEntry
{
    scZIPLocalHeader header{};
    std::string name;  // in the encoding that the flags declare
    std::string extra; // always empty
    clsFileRWTemp compressed{L"ZIP"};
    std::uint32_t attributes = 0; // the attributes of the source file
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

    // Creates the archive, which stays empty until Close. IsOpen returns false if it couldn't be created.
    clsZIPFile(const String& fileName, const String& comment);
    clsZIPFile(const clsZIPFile&) = delete;
    clsZIPFile& operator=(const clsZIPFile&) = delete;
    ~clsZIPFile();

    bool IsOpen() const { return _archive.IsOpen(); }

    // Adds a file, under its path if `storedName` is empty. Returns kOk, kCannotOpen or kCannotStore.
    int AddFile(const String& path, const String& storedName, const String& comment);

    // Adds an entry for a folder, without its contents.
    void AddDirectory(const String& path, const String& storedName, const WIN32_FIND_DATAW& data);

    // Adds the files in the folder `relative` below `base` that match the pattern, with names relative to `base`. With
    // kSubfolders, also adds everything in the subfolders, regardless of the pattern. Files that can't be added are
    // skipped.
    void AddList(const String& base, const String& relative, const String& pattern, std::uint32_t flags);

    // Writes the archive. Returns kOk or kCannotWrite. On failure, a partial archive remains.
    int Close();

private:
    friend struct ZIPFileTestAccess;

    class clsIndexEntryList;

    bool Store(clsZIPFileEntry& entry, clsFile& source, const String& path);
    bool Write(const void* bytes, std::size_t count);
    bool WriteMember(clsZIPFileEntry& entry);
    bool WriteDirectory(const clsIndexEntryList& index);
    bool WriteEnd(const clsIndexEntryList& index, std::uint32_t directoryOffset);
    bool LogWriteError(int place) const;

    WCPtrSList<clsZIPFileEntry> _entries; // in insertion order; owned by this object
    clsFileRW _archive;
    String _comment;
};

} // namespace qx
