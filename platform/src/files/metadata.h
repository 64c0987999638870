// The system's view of a file: attributes, times, size.
#pragma once

#include <fileapi.h>

#include <string>

#include <sys/stat.h>

namespace qxplatform
{

struct Metadata
{
    DWORD attributes = 0;
    FILETIME creation{};
    FILETIME access{};
    FILETIME write{};
    ULONGLONG size = 0;
    DWORD volume = 0;
    DWORD links = 0;
    ULONGLONG index = 0;
};

// Follows links. If a link's target doesn't exist and `orLink` is set, reads the link itself. Returns false and sets
// errno on failure.
bool ReadMetadata(const std::string& path, Metadata& metadata, bool orLink = false);

// Returns REPARSE_POINT if the path is a link, whatever its target, otherwise 0.
DWORD LinkAttribute(const std::string& path);

// Returns a path that refers to an opened file even after it was renamed or deleted.
std::string PathOfDescriptor(int descriptor);

// READONLY is represented by the mode: nobody may write. HIDDEN and SYSTEM, which Linux lacks, are stored in an
// extended attribute. All files have ARCHIVE and all folders DIRECTORY; no other attributes are stored.
inline constexpr DWORD kEptAttributes = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM;

DWORD ReadKeptAttributes(const std::string& path);

// Both set errno on failure.
bool WriteKeptAttributes(const std::string& path, DWORD attributes);
bool WriteReadOnly(const std::string& path, bool isReadOnly);

inline bool IsReadOnly(mode_t mode)
{
    return (mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0;
}

} // namespace qxplatform
