// The one text by which logs and reports name a module: its file, its version and its build.
#pragma once

#include "core/text/string.h"

#include <windows.h>

#include <memory>

namespace qx
{

// Of a module by its version block. Empty if the block names no version.
String DescribeVersionBlock(HMODULE module, const void* block);

// Empty for null. A module without a version gets a text that says so.
String GetModuleDescription(HMODULE module);

// Of a module of this name that is loaded, or else of the file: a zero-terminated text.
std::unique_ptr<wchar_t[]> GetNamedModuleDescription(const wchar_t* fileName);

} // namespace qx
