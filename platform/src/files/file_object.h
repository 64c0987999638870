// An opened file.
#pragma once

#include "base/descriptor.h"
#include "base/mutex.h"
#include "base/object.h"
#include "files/byte_locks.h"

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
        bool isDeletedOnClose = false;
    };

    FileObject(Descriptor descriptor, const Options& options);

    // The rights that the generic ones stand for with a file.
    static DWORD MapFileAccess(DWORD access);
    DWORD MapAccess(DWORD access) const override { return MapFileAccess(access); }

    int descriptor() const { return _descriptor.Get(); }
    const Options& options() const { return _options; }

    // Removes the file's present name, if it was opened to be deleted on close by this process.
    void DeleteIfAsked();

    ByteLocks byteLocks;

    // The file pointer belongs to the object: handles duplicated from each other share it. Whoever moves it or
    // transfers bytes at it holds the lock.
    Mutex positionLock;
    std::int64_t position = 0;

private:
    ~FileObject() override { DeleteIfAsked(); }

    Descriptor _descriptor;
    const Options _options;
    const pid_t _creator;
    Mutex _deleteLock;
    bool _isDeleted = false;
};

} // namespace qxplatform
