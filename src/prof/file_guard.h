// The lock between processes that read and write the same profile.
#pragma once

#include "files/file.h"

#include <optional>

namespace qx
{

// Locks the first byte of a file while a profile is read or written. By convention this byte represents the whole file.
class clsFileGuard
{
public:
    // Waits as long as clsFile::Lock does.
    explicit clsFileGuard(clsFile& file) : _file(file), _lock(file.Lock(0, 1)) {}
    clsFileGuard(const clsFileGuard&) = delete;
    clsFileGuard& operator=(const clsFileGuard&) = delete;
    ~clsFileGuard() { _file.Unlock(_lock); }

    bool IsLocked() const { return _lock.has_value(); }

private:
    clsFile& _file;
    std::optional<scFileLock> _lock;
};

} // namespace qx
