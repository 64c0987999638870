// The images that the process has loaded.
#pragma once

#include <minwindef.h>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace qxplatform
{

// A module's handle is the start address of its image, as on the system.
struct Module
{
    HMODULE handle = nullptr;
    std::string path;     // only a name for the image that the kernel maps into every process
    std::size_t size = 0; // in bytes, whole pages
};

// Returns all loaded modules. The program comes first.
std::vector<Module> LoadedModules();

// Returns the module of a handle, or the program for null. Empty with ERROR_MOD_NOT_FOUND if there is none.
std::optional<Module> ModuleOf(HMODULE handle);

// Returns the module that contains an address.
std::optional<Module> ModuleAt(const void* address);

// Returns a loaded module by a caller's name or path, without regard to case: "name" and "name.dll" also match
// libname.so. The names of system libraries refer to the layer.
std::optional<Module> FindModule(std::u16string_view name);

// Returns true if the name is the name of a system library.
bool IsSystemLibrary(std::u16string_view name);

// Returns the layer's own module.
Module Layer();

// The debug-help library belongs to the layer but is loaded only on demand, by the name "dbghelp".
bool IsDebugHelp(std::u16string_view name);
std::string DebugHelpPath();
// Returns true for the layer and the debug-help library, which export functions by the link names of QXP().
bool IsLayerOrDebugHelp(const Module& module);

// Returns the file names that a library of this name may have on Linux, the most likely first.
std::vector<std::u16string> FileNamesOf(std::u16string_view name);

} // namespace qxplatform
