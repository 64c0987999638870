// An opened file.
#pragma once

#include "base/descriptor.h"
#include "base/mutex.h"
#include "base/object.h"
#include "files/byte_locks.h"

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>

namespace qxplatform
{

class FileObject : public Object
{
public:
    static constexpr ObjectType kObjectType = ObjectType::File;

    struct Options
    {
        bool canSeek = false;
        bool canWrite = false; // access of the descriptor, whatever the rights of the handle
        bool appends = false;
        // The folder that contains the name to remove, if the file was opened relative to a folder.
        Ref<FileObject> folder{};
        std::string name{};
    };

    FileObject(Descriptor descriptor, const Options& options);

    // Maps generic rights to the rights of a file.
    static DWORD MapFileAccess(DWORD access);
    DWORD MapAccess(DWORD access) const override { return MapFileAccess(access); }

    int descriptor() const { return _descriptor.Get(); }
    const Options& options() const { return _options; }

    // Sets whether closing the last handle deletes the file. Only the process that opened the file deletes it.
    void SetDeletedOnClose(bool isDeleted) { _isDeletedOnClose = isDeleted; }
    // Removes the file's current name if the file is to be deleted on close.
    void DeleteIfAsked();

    ByteLocks byteLocks;

    // The file pointer belongs to the object and is shared by duplicated handles. Hold this lock to move it or to
    // transfer bytes at it.
    Mutex positionLock;
    std::int64_t position = 0;

private:
    ~FileObject() override { DeleteIfAsked(); }

    Descriptor _descriptor;
    const Options _options;
    const pid_t _creator;
    std::atomic<bool> _isDeletedOnClose = false;
    Mutex _deleteLock;
    bool _isDeleted = false;
};

// Exists while a file that is deleted on close is created and its object enters the handle table. The end of the
// process waits for that; otherwise it would miss a file that another thread is just creating, and the file would
// remain.
class DeletedFileOpening
{
public:
    explicit DeletedFileOpening(bool isDeletedOnClose);
    DeletedFileOpening(const DeletedFileOpening&) = delete;
    DeletedFileOpening& operator=(const DeletedFileOpening&) = delete;
    ~DeletedFileOpening();

    // Returns false if the process is ending and has already deleted such files.
    bool IsAllowed() const { return _isAllowed; }

private:
    const bool _isLocked;
    bool _isAllowed = false;
};

} // namespace qxplatform
