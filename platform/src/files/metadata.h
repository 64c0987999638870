// What the system tells about a file: attributes, times, size.
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

// A link is followed; one that leads nowhere is told of itself if `orLink` is set. False with errno otherwise.
bool ReadMetadata(const std::string& path, Metadata& metadata, bool orLink = false);

// REPARSE_POINT for a path that is a link, whatever it leads to; else 0.
DWORD LinkAttribute(const std::string& path);

// A path by which an opened file can be reached, whatever has become of its name.
std::string PathOfDescriptor(int descriptor);

// READONLY is told by the mode: no one may write. HIDDEN and SYSTEM, which Linux doesn't know, are kept in an extended
// attribute; ARCHIVE stands at every file, DIRECTORY at folders, and no others are kept.
inline constexpr DWORD kEptAttributes = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM;

DWORD ReadKeptAttributes(const std::string& path);

// Both fail with errno.
bool WriteKeptAttributes(const std::string& path, DWORD attributes);
bool WriteReadOnly(const std::string& path, bool isReadOnly);

inline bool IsReadOnly(mode_t mode)
{
    return (mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0;
}

} // namespace qxplatform
