// The lock that keeps the processes apart that read and write one profile.
#pragma once

#include "files/file.h"

#include <optional>

namespace qx
{

// Holds the first byte of a file, which stands for all of it while a profile is read or written.
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
