// The description of a module in logs and reports: file name, version and build.
#pragma once

#include "core/text/string.h"

#include <windows.h>

#include <memory>

namespace qx
{

// Returns the description of a module from its version block, or an empty text if the block contains no version.
String DescribeVersionBlock(HMODULE module, const void* block);

// Returns the description of a module, or an empty text for null. If the module has no version information, the
// description says so.
String GetModuleDescription(HMODULE module);

// Returns the description of the loaded module with this name, or else of the file, as zero-terminated text.
std::unique_ptr<wchar_t[]> GetNamedModuleDescription(const wchar_t* fileName);

} // namespace qx
