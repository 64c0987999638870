// Writes ZIP archives. Nothing of a member is written to the archive while it is added: it is compressed into a
// temporary file of its own, and the whole archive is laid down at the end. So the sizes and check sums are known
// before the headers are written, and nothing is ever written twice.
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

// A member: the header as it goes to the file, and what goes behind it.
struct clsZIPFileEntry
{
    scZIPLocalHeader header{};
    std::string name;  // as stored, in the encoding that the flags tell
    std::string extra; // always empty
    clsFileRWTemp compressed{L"ZIP"};
    std::uint32_t attributes = 0; // of the file
    String storedName;
    String comment;
    std::uint32_t offset = 0; // of the header in the archive, once that is written
};

// One thread at a time.
class clsZIPFile
{
public:
    // Result codes, which are also those of the exported functions.
    static constexpr int kOk = 0;
    static constexpr int kCannotOpen = -1;
    static constexpr int kCannotStore = -2;
    static constexpr int kCannotWrite = -3;

    static constexpr std::uint32_t kSubfolders = 1; // flag of AddList

    // Makes the archive, which stays empty until Close; IsOpen tells whether it could be made.
    clsZIPFile(const String& fileName, const String& comment);
    clsZIPFile(const clsZIPFile&) = delete;
    clsZIPFile& operator=(const clsZIPFile&) = delete;
    ~clsZIPFile();

    bool IsOpen() const { return _archive.IsOpen(); }

    // Adds a file, under its path if there is no stored name: kOk, kCannotOpen or kCannotStore.
    int AddFile(const String& path, const String& storedName, const String& comment);

    // Adds an entry for a folder alone.
    void AddDirectory(const String& path, const String& storedName, const WIN32_FIND_DATAW& data);

    // Adds the files of the folder `relative` below `base` that fit the pattern, under their names from `base` on; with
    // kSubfolders also all that its subfolders hold, whatever the pattern. What can't be added is left out.
    void AddList(const String& base, const String& relative, const String& pattern, std::uint32_t flags);

    // Writes the archive: kOk or kCannotWrite. What was written before a failure stays.
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

    WCPtrSList<clsZIPFileEntry> _entries; // in order of adding; they are this object's
    clsFileRW _archive;
    String _comment;
};

} // namespace qx
