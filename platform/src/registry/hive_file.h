// The file of a hive: change detection, atomic replacement, inter-process locking.
#pragma once

#include "base/descriptor.h"

#include <minwindef.h>

#include <sys/stat.h>

#include <string>
#include <string_view>

namespace qxplatform
{

// The version of the file that was last read or written. It is kept open so that its inode number isn't reused while we
// compare it. Since writers replace the file, an equal inode number means equal contents. Times and size detect edits
// in place.
class HiveFile
{
public:
    // Returns true if `path` is still the version that was last read or written.
    bool IsCurrent(const std::string& path) const;

    // Reads the whole file. A missing file counts as empty.
    LSTATUS Load(const std::string& path, std::string& bytes);

    // Writes a new file that replaces the old one and takes over its mode. `mode` is used if there is no old file.
    LSTATUS Replace(const std::string& path, std::string_view bytes, mode_t mode);

    // Invalidates the cached version until the next load.
    void Forget() { _known = false; }

private:
    bool Keep(const std::string& path, Descriptor file);

    bool _known = false;
    std::string _path;
    Descriptor _file; // empty if the file doesn't exist
    struct stat _status = {};
};

// Held while a hive is read, changed and replaced. Readers don't need it. Waits while another process holds it.
class HiveLock
{
public:
    explicit HiveLock(const std::string& path);
    LSTATUS Status() const { return _status; }

private:
    Descriptor _file; // closing it releases the lock
    LSTATUS _status;
};

} // namespace qxplatform
