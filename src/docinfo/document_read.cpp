#include "docinfo/document_read.h"

#include "core/ticks.h"
#include "docinfo/document_file.h"
#include "docinfo/message.h"
#include "docinfo/property_set.h"
#include "docinfo/reader_table.h"
#include "docinfo/shell_index.h"
#include "docinfo/storage.h"
#include "files/file_window.h"
#include "files/paths.h"

#include <cstring>
#include <optional>
#include <utility>

namespace qx
{
namespace
{

// Enters a critical section, unless it is null, when Take is called before the first write to the record. Leaves it at
// the end of the scope.
class LateLock
{
public:
    explicit LateLock(clsCriticalSection* section) : _section(section) {}
    LateLock(const LateLock&) = delete;
    LateLock& operator=(const LateLock&) = delete;
    ~LateLock()
    {
        if (_isTaken)
            _section->Leave();
    }

    void Take()
    {
        if (_section == nullptr || _isTaken)
            return;
        _section->Enter();
        _isTaken = true;
    }

private:
    clsCriticalSection* const _section;
    bool _isTaken = false;
};

// Opens the file again. Returns false, with the record cleared, if someone else has locked it in the meantime.
bool Reopen(clsDocu& record, clsDocFile& file)
{
    file.Open(
        record.resolvedPath, FileAccess::Read, FileDisposition::OpenExisting, FileShare::Read, kFileAttributeNormal);
    if (!file.IsOpen())
        record.Clear();
    return file.IsOpen();
}

// Reads the shell's index. Returns false if it has no texts about the file. Otherwise the next request reads the file
// again, because the index may contain more by then.
bool ReadIndex(clsDocu& record)
{
    record.reader = L"shell index";
    if (ReadShellIndex(record, record.resolvedPath) >= 0)
    {
        record.readTick = 0;
        return true;
    }
    record.reader = nullptr;
    return false;
}

// Reads a compound file. Returns false on failure; the caller then chooses a reader from the reader table.
bool ReadStorage(clsDocu& record)
{
    const bool isMessage = GetPathExtension(record.resolvedPath) == L".msg";
    record.reader = isMessage ? L"message" : L"property set";
    if ((isMessage ? ReadMessage : ReadPropertySet)(record, record.resolvedPath) >= 0)
        return true;
    record.reader = nullptr;
    return false;
}

void ReadContents(clsDocu& record, clsDocFile& file)
{
    record.reader = nullptr;
    record.remark.Empty();
    // The shell and storages open the file with their own sharing modes.
    if (HasShellIndex())
    {
        file.Close();
        if (ReadIndex(record) || !Reopen(record, file))
            return;
    }
    std::optional<FileWindow> window(std::in_place, file);
    if (HasStorageSignature(*window))
    {
        file.Close();
        if (ReadStorage(record) || !Reopen(record, file))
            return;
        window.emplace(file);
    }
    const ReaderRow* const row = ChooseReader(record.resolvedPath, *window);
    if (row == nullptr)
        return;
    record.reader = row->name;
    if (row->read(record, *window) < 0 && row->failure == ReaderFailure::ClearsRecord)
        record.Clear();
}

} // namespace

void ReadDocument(clsDocu& record, std::uint64_t readBefore, clsCriticalSection* section)
{
    LateLock lock(section);
    clsDocFile file(record.resolvedPath);
    if (!file.IsOpen())
    {
        lock.Take();
        if (file.GetErrorKind() == FileError::InUse)
            record.readTick = 0; // the next request tries again
        else
            record.Forget();
        return;
    }
    FILETIME written = {};
    const bool hasTime = GetLastWriteTime(file, written);
    lock.Take();
    record.accessible = true;
    if (!hasTime)
    {
        record.Forget();
        return;
    }
    SYSTEMTIME time = kNoTime;
    if (!FileTimeToSystemTime(&written, &time))
        time = kNoTime;
    // An unchanged file isn't read again. `readBefore` is 0 if the record was cleared or its file was in use at the
    // last refresh.
    if (readBefore != 0 && std::memcmp(&time, &record.fileTime, sizeof time) == 0)
        return;
    record.fileTime = time;
    record.LastSaved = time; // unless a reader finds a better one
    record.readTick = UtilGetTicks();
    ReadContents(record, file);
}

} // namespace qx
