// The images that the process has loaded.
#pragma once

#include <minwindef.h>

#include <optional>
#include <string>
#include <vector>

namespace qxplatform
{

// A module's handle is the address at which its image begins, as on the system.
struct Module
{
    HMODULE handle = nullptr;
    std::string path;
};

// The program comes first.
std::vector<Module> LoadedModules();

// The module of a handle; of the program for null. Empty with ERROR_MOD_NOT_FOUND if there is none.
std::optional<Module> ModuleOf(HMODULE handle);

// The module that holds an address.
std::optional<Module> ModuleAt(const void* address);

// A loaded module by a caller's name or path, without regard to case: "name" and "name.dll" also mean libname.so. The
// names of the system's libraries mean the layer.
std::optional<Module> FindModule(std::u16string_view name);

// Whether a name is that of one of the system's libraries.
bool IsSystemLibrary(std::u16string_view name);

// The layer's own module.
Module Layer();

// The file names that a library of this name may have on Linux, the likeliest first.
std::vector<std::u16string> FileNamesOf(std::u16string_view name);

} // namespace qxplatform
