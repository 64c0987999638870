// Where the process and the library come from.
#pragma once

#include "core/text/string.h"

#include <windows.h>

#include <string_view>

namespace qx
{

// All in upper case; the path is cut at 260 characters.
struct ModulePaths
{
    String path;
    String file;      // name with extension
    String baseName;  // name without extension
    String directory; // with the drive, and the separator at its end
};

// The path of a module's file, however long; empty if there is no such module.
String ModulePath(HMODULE module);

// What stands behind the last separator.
std::wstring_view FileNameOf(std::wstring_view path);

// Both are asked for once.
const ModulePaths& ProcessPaths();
const ModulePaths& LibraryPaths();

inline const String& ProcessBaseName()
{
    return ProcessPaths().baseName;
}

} // namespace qx
