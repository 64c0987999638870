#include "files/paths.h"

#include "core/forever.h"
#include "core/pattern/regex.h"
#include "files/path_separator.h"
#include "module/late_libraries.h"

#include <stdlib.h>

#include <iterator>

namespace qx
{
namespace
{

constexpr std::size_t kPathLength = 260;
constexpr std::size_t kDriveLength = 3;
constexpr std::size_t kPartLength = 256;

// The parts of a path. All are empty if one of them is too long.
struct PathParts
{
    explicit PathParts(const wchar_t* path)
    {
        if (_wsplitpath_s(
                path, drive, kDriveLength, directory, kPartLength, name, kPartLength, extension, kPartLength) != 0)
            drive[0] = directory[0] = name[0] = extension[0] = 0;
    }

    wchar_t drive[kDriveLength] = {};
    wchar_t directory[kPartLength] = {};
    wchar_t name[kPartLength] = {};
    wchar_t extension[kPartLength] = {};
};

IString Joined(const wchar_t* drive, const wchar_t* directory, const wchar_t* name, const wchar_t* extension)
{
    wchar_t path[kPathLength + 2 * kPartLength];
    return _wmakepath_s(path, std::size(path), drive, directory, name, extension) == 0 ? IString(path) : IString();
}

} // namespace

IString GetPathDirectory(const wchar_t* path)
{
    const PathParts parts(path);
    return Joined(parts.drive, parts.directory, nullptr, nullptr);
}

IString GetPathStem(const wchar_t* path)
{
    return IString(PathParts(path).name);
}

IString GetPathName(const wchar_t* path)
{
    const PathParts parts(path);
    return Joined(nullptr, nullptr, parts.name, parts.extension);
}

IString GetPathExtension(const wchar_t* path)
{
    return IString(PathParts(path).extension);
}

PathClass ClassifyPath(const String& path)
{
    constexpr std::uint32_t kCaseless = 8;
    static clsRegEx& printerPort = MakeForever<clsRegEx>(L"^LPT\\d+:$", kCaseless);
    static clsRegEx& serialPort = MakeForever<clsRegEx>(L"^COM\\d+:$", kCaseless);
    static clsRegEx& usb = MakeForever<clsRegEx>(L"^USB:", kCaseless);
    static clsRegEx& fileUrl = MakeForever<clsRegEx>(L"^FILE:(.*)", kCaseless);
    constexpr std::size_t kFileUrlLength = 5;

    if (printerPort.Match(path, nullptr))
        return PathClass::PrinterPort;
    if (serialPort.Match(path, nullptr))
        return PathClass::SerialPort;
    if (usb.Match(path, nullptr))
        return PathClass::Usb;
    const String target = fileUrl.Match(path, nullptr) ? path.Mid(kFileUrlLength) : path;
    const DWORD attributes = GetFileAttributesW(target);
    if (attributes == INVALID_FILE_ATTRIBUTES)
        return PathClass::Missing;
    return attributes & FILE_ATTRIBUTE_DIRECTORY ? PathClass::Folder : PathClass::File;
}

String NormalizePath(const String& path)
{
    wchar_t full[kPathLength];
    const DWORD length = GetFullPathNameW(path, static_cast<DWORD>(kPathLength), full, nullptr);
    if (length == 0 || length >= kPathLength)
        return path;

    // Inserts "." folders so that the system's canonicalization removes doubled separators.
    String dotted(full);
    const String separator(&PATH_SEPARATOR, 0, 1);
    dotted.Replace(separator, separator + L"." + separator);
    wchar_t canonical[kPathLength];
    auto& canonicalize = Shlwapi().p_PathCanonicalize;
    if (dotted.Length() >= kPathLength || !canonicalize.IsThere() || !canonicalize(canonical, dotted))
        return full;
    return canonical;
}

bool GetFileData(const String& path, WIN32_FILE_ATTRIBUTE_DATA& data)
{
    if (GetFileAttributesExW(path, GetFileExInfoStandard, &data))
        return true;
    if (const DWORD error = GetLastError(); error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND)
        return false;
    WIN32_FIND_DATAW found;
    const HANDLE find = FindFirstFileW(path, &found);
    if (find == INVALID_HANDLE_VALUE)
        return false;
    FindClose(find);
    data.dwFileAttributes = found.dwFileAttributes;
    data.ftCreationTime = found.ftCreationTime;
    data.ftLastAccessTime = found.ftLastAccessTime;
    data.ftLastWriteTime = found.ftLastWriteTime;
    data.nFileSizeHigh = found.nFileSizeHigh;
    data.nFileSizeLow = found.nFileSizeLow;
    return true;
}

} // namespace qx
