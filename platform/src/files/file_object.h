// An opened file.
#pragma once

#include "base/descriptor.h"
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
        bool canWrite = false; // the descriptor, whatever the handle may do
        bool appends = false;
        // Set for a file that was opened relative to a folder: where its name is removed.
        Ref<FileObject> folder{};
        std::string name{};
    };

    FileObject(Descriptor descriptor, const Options& options);

    // The rights that the generic ones stand for with a file.
    static DWORD MapFileAccess(DWORD access);
    DWORD MapAccess(DWORD access) const override { return MapFileAccess(access); }

    int descriptor() const { return _descriptor.Get(); }
    const Options& options() const { return _options; }

    // Lets the last close delete the file, or not. The file is deleted only by the process that opened it.
    void SetDeletedOnClose(bool isDeleted) { _isDeletedOnClose = isDeleted; }
    // Removes the file's current name if the last close is to delete it.
    void DeleteIfAsked();

    ByteLocks byteLocks;

    // The file pointer belongs to the object: handles duplicated from each other share it. Whoever moves it or
    // transfers bytes at it holds the lock.
    std::mutex positionLock;
    std::int64_t position = 0;

private:
    ~FileObject() override { DeleteIfAsked(); }

    Descriptor _descriptor;
    const Options _options;
    const pid_t _creator;
    std::atomic<bool> _isDeletedOnClose = false;
    std::mutex _deleteLock;
    bool _isDeleted = false;
};

} // namespace qxplatform
