// Names of C++ functions in readable form.
#pragma once

#include <string>

namespace qxplatform
{

// Returns the demangled form of a linker's name, with parameters, and with the result if the name contains it. A name
// that isn't mangled is returned without its version.
std::string DemangledName(const char* name);

// Removes parameters, result and qualifiers from a demangled name.
std::string NameWithoutParameters(const std::string& demangled);

} // namespace qxplatform
