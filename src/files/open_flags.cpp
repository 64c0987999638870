#include "files/open_flags.h"

#include <cstdint>

namespace qx
{

namespace
{

struct scFlag
{
    std::uint32_t flag;
    DWORD system;
};

constexpr scFlag kFlags[] = {
    {kFileWriteThrough, FILE_FLAG_WRITE_THROUGH},
    {kFileSequentialScan, FILE_FLAG_SEQUENTIAL_SCAN},
    {kFileDeleteOnClose, FILE_FLAG_DELETE_ON_CLOSE},
    {kFileRandomAccess, FILE_FLAG_RANDOM_ACCESS},
    {kFileAttributeNormal, FILE_ATTRIBUTE_NORMAL},
    {kFileAttributeHidden, FILE_ATTRIBUTE_HIDDEN},
    {kFileAttributeReadOnly, FILE_ATTRIBUTE_READONLY},
    {kFileAttributeTemporary, FILE_ATTRIBUTE_TEMPORARY},
};

} // namespace

DWORD SystemAccess(FileAccess access)
{
    switch (access)
    {
    case FileAccess::Read:
        return GENERIC_READ;
    case FileAccess::Write:
        return GENERIC_WRITE;
    case FileAccess::ReadWrite:
        return GENERIC_READ | GENERIC_WRITE;
    }
    return 0;
}

DWORD SystemDisposition(FileDisposition disposition)
{
    switch (disposition)
    {
    case FileDisposition::OpenExisting:
        return OPEN_EXISTING;
    case FileDisposition::OpenAlways:
        return OPEN_ALWAYS;
    case FileDisposition::CreateAlways:
        return CREATE_ALWAYS;
    }
    return 0;
}

DWORD SystemShare(FileShare share)
{
    switch (share)
    {
    case FileShare::None:
    case FileShare::Exclusive:
        return 0;
    case FileShare::Read:
        return FILE_SHARE_READ;
    case FileShare::ReadWrite:
        return FILE_SHARE_READ | FILE_SHARE_WRITE;
    }
    return 0;
}

DWORD SystemFlags(std::uint32_t flags)
{
    DWORD system = 0;
    for (const scFlag& row : kFlags)
    {
        if ((flags & row.flag) != 0)
        {
            system |= row.system;
        }
    }
    return system;
}

FileError ClassifyOpenError(DWORD error)
{
    switch (error)
    {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_INVALID_DRIVE:
    case ERROR_BAD_NETPATH:
    case ERROR_DEV_NOT_EXIST:
        return FileError::PathNotFound;
    case ERROR_SHARING_VIOLATION:
    case ERROR_LOCK_VIOLATION:
        return FileError::InUse;
    case ERROR_ALREADY_EXISTS:
        return FileError::AlreadyExists;
    case ERROR_ACCESS_DENIED:
    case ERROR_WRITE_PROTECT:
        return FileError::AccessDenied;
    default:
        return FileError::Other;
    }
}

} // namespace qx
