// The file of a hive: noticing changes, replacing it whole, a lock between processes.
#pragma once

#include "base/descriptor.h"

#include <minwindef.h>

#include <sys/stat.h>

#include <string>
#include <string_view>

namespace qxplatform
{

// One version of the file, as it was read or written last. It is held open, so that no other file gets its number
// while we compare by that; since writers replace the file, the same number then means the same content. Times and
// size are for people who edit it in place.
class HiveFile
{
public:
    // Whether `path` still is what was read or written last.
    bool IsCurrent(const std::string& path) const;

    // Reads the whole file; a file that isn't there is empty.
    LSTATUS Load(const std::string& path, std::string& bytes);

    // Writes a new file and puts it in the place of the old one, whose mode it takes over; `mode` is for the first.
    LSTATUS Replace(const std::string& path, std::string_view bytes, mode_t mode);

    // Nothing is current until the next load.
    void Forget() { _known = false; }

private:
    bool Keep(const std::string& path, Descriptor file);

    bool _known = false;
    std::string _path;
    Descriptor _file; // none for a file that isn't there
    struct stat _status = {};
};

// Held while a hive is read, changed and replaced. Readers need none. Waits as long as another process holds it.
class HiveLock
{
public:
    explicit HiveLock(const std::string& path);
    LSTATUS Status() const { return _status; }

private:
    Descriptor _file; // closing it ends the lock
    LSTATUS _status;
};

} // namespace qxplatform
