// Names of C++ functions in readable form.
#pragma once

#include <string>

namespace qxplatform
{

// Removes the symbol version from a name, and demangles it if it is mangled. The result includes the parameters, and
// the return type if the mangled name contains it.
std::string DemangledName(const char* name);

// Removes parameters, result and qualifiers from a demangled name.
std::string NameWithoutParameters(const std::string& demangled);

} // namespace qxplatform
