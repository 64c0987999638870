// Paths taken apart and put in form, and what stands at them. Both separators are taken, on every system.
#pragma once

#include "core/text/string.h"

#include <windows.h>

namespace qx
{

IString GetPathDirectory(const wchar_t* path); // drive and directory, with the separator at its end
IString GetPathStem(const wchar_t* path);      // file name without extension
IString GetPathName(const wchar_t* path);      // file name with extension
IString GetPathExtension(const wchar_t* path); // with its dot

// What a path stands for.
enum class PathClass
{
    Missing = 0,
    File = 1,
    Folder = 2,
    PrinterPort = 3,
    SerialPort = 4,
    Usb = 6
};

// Ports are told by their names; "FILE:" in front of a path is taken off.
PathClass ClassifyPath(const String& path);

// The full path in canonical form; the path itself if the system can't make it full.
String NormalizePath(const String& path);

// Attributes, times and size of what stands at a path; also where a file can't be opened but is listed in its folder.
bool GetFileData(const String& path, WIN32_FILE_ATTRIBUTE_DATA& data);

} // namespace qx
