// Splitting, normalizing and classifying paths. Both separators are accepted on every system.
#pragma once

#include "core/text/string.h"

#include <windows.h>

namespace qx
{

IString GetPathDirectory(const wchar_t* path); // drive and folder, with a trailing separator
IString GetPathStem(const wchar_t* path);      // file name without extension
IString GetPathName(const wchar_t* path);      // file name with extension
IString GetPathExtension(const wchar_t* path); // with its dot

// What a path refers to.
enum class PathClass
{
    Missing = 0,
    File = 1,
    Folder = 2,
    PrinterPort = 3,
    SerialPort = 4,
    Usb = 6
};

// Ports are recognised by their names. A leading "FILE:" is removed first.
PathClass ClassifyPath(const String& path);

// Returns the full path in canonical form, or the path itself if the system can't resolve it.
String NormalizePath(const String& path);

// Returns the attributes, times and size of a file or folder. Also works for a file that can't be opened but is listed
// in its folder.
bool GetFileData(const String& path, WIN32_FILE_ATTRIBUTE_DATA& data);

} // namespace qx
