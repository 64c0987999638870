// A folder that is held open. Its entries are opened, created and removed relative to the handle, one name at a time
// and never through a link, so another process that swaps a folder for a link can't redirect the operation.
#pragma once

#include "core/text/string.h"
#include "files/handle_holder.h"
#include "files/posix_files.h"

#include <windows.h>

#include <cstdint>
#include <optional>
#include <string_view>

namespace qx
{

// The last error of an operation that found a link, a pipe or a device in the place of a file or folder.
constexpr DWORD kErrorIsLink = ERROR_CANT_RESOLVE_FILENAME;

// Permissions of files and folders that nobody else may read, as POSIX modes.
constexpr std::uint32_t kModePrivateFile = 0600;
constexpr std::uint32_t kModePrivateFolder = 0700;

// Failures set the last error. Names are single components; separators, "." and ".." are refused. Modes are POSIX
// modes, restricted by the process's umask; they have no effect on windows.
class clsFolder
{
public:
    clsFolder() = default;
    // Opens a folder by its path, following links. An empty path is the current folder.
    explicit clsFolder(const String& path);
    clsFolder(clsFolder&& other) noexcept { *this = static_cast<clsFolder&&>(other); }
    clsFolder& operator=(clsFolder&& other) noexcept;

    bool IsOpen() const { return _handle.IsValid(); }
    // Returns the handle for queries. This object keeps ownership.
    HANDLE Handle() const { return _handle.Get(); }

    // Opens the folder `name` of `parent`, creating it if necessary. This object is closed on failure; the last error
    // is kErrorIsLink if the name is a link.
    void OpenSubfolder(const clsFolder& parent, const String& name, std::optional<std::uint32_t> mode = {});

    // Removes all permissions except `allowed` from the folder, which must have been opened by OpenSubfolder with a
    // mode. Returns false on failure, for example if the folder belongs to another user.
    bool RestrictMode(std::uint32_t allowed) const { return RestrictPosixMode(_handle.Get(), allowed); }

    // Creates a file. If any entry of that name exists, the last error is ERROR_FILE_EXISTS. `flags` are the attributes
    // and flags of CreateFileW. Returns the handle, or INVALID_HANDLE_VALUE.
    HANDLE CreateNew(
        const String& name, DWORD access, DWORD share, DWORD flags, std::optional<std::uint32_t> mode = {}) const;

    // Opens an existing file in the same way. Anything other than a file is an error.
    HANDLE OpenExisting(const String& name, DWORD access, DWORD share, DWORD flags) const;

    // Removes an entry that isn't a folder: a file, even if it is read-only, a pipe, or a link itself.
    bool Remove(const String& name) const;

    bool Contains(const String& name) const;
    bool IsLink(const String& name) const;

    // Returns false for separators, "." and "..".
    static bool IsSingleName(std::wstring_view name);

private:
    // The arguments of NtCreateFile. `kind` requires a folder or forbids one; 0 accepts both.
    struct scEntryOpen
    {
        DWORD access;
        DWORD share;
        DWORD disposition;
        DWORD flags;
        DWORD kind;
        std::optional<std::uint32_t> mode;
    };
    HANDLE Open(const String& name, const scEntryOpen& open) const;

    clsGenericHandleObjectAutoRelease _handle;
};

// Sets whether the file is deleted when its last handle is closed. The handle must have the right DELETE.
bool SetDeletedOnClose(HANDLE file, bool isDeleted);

// Clears the read-only attribute. `attributes` are the file's current attributes. The handle must have the right
// FILE_WRITE_ATTRIBUTES.
bool ClearReadOnly(HANDLE file, DWORD attributes);

// Makes the file read-only and clears its other attributes. The handle must have the right FILE_WRITE_ATTRIBUTES.
bool SetReadOnly(HANDLE file);

} // namespace qx
