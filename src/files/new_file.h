// A file that is being written inside an open folder.
#pragma once

#include "files/file.h"
#include "files/folder.h"

#include <cstdint>
#include <optional>

namespace qx
{

// The file is deleted with the object, and also when the process ends or is interrupted, unless SetWhole was called.
// While it is written, its owner may write to it even if its mode says otherwise: a read-only file can't be deleted.
class clsNewFile
{
public:
    // Creates the file for writing, without sharing. An existing entry is removed first, so that nothing is written to
    // a pipe, a device or another name of the same file. A folder or a link in its place is an error, as is a file that
    // another process uses. On failure the last error is set; it is kErrorIsLink for a link.
    clsNewFile(const clsFolder& folder, const String& name, std::optional<std::uint32_t> mode = {});
    clsNewFile(const clsNewFile&) = delete;
    clsNewFile& operator=(const clsNewFile&) = delete;

    bool IsOpen() const { return _file.has_value(); }
    // Valid only while the file is open.
    clsFile& File() { return *_file; }

    // Keeps the file. Returns false if that fails.
    bool SetWhole();

private:
    std::optional<clsFileRW> _file;
    bool _becomesReadOnly = false;
};

// Creates a link, replacing an existing entry unless it is a folder.
bool CreateLink(const clsFolder& folder, const String& name, std::string_view target);

} // namespace qx
