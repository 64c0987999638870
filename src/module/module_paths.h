// The paths of the process and of the library.
#pragma once

#include "core/text/string.h"

#include <windows.h>

#include <string_view>

namespace qx
{

// All members are in upper case. Paths are truncated to 260 characters.
struct ModulePaths
{
    String path;
    String file;      // name with extension
    String baseName;  // name without extension
    String directory; // with drive and trailing separator
};

// Returns the path of a module's file, however long, or an empty text if there is no such module.
String ModulePath(HMODULE module);

// Returns the part of a path after the last separator.
std::wstring_view FileNameOf(std::wstring_view path);

// Both are determined once and cached.
const ModulePaths& ProcessPaths();
const ModulePaths& LibraryPaths();

inline const String& ProcessBaseName()
{
    return ProcessPaths().baseName;
}

} // namespace qx
