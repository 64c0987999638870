// The form in which a profile stands in its file, which the library tells no caller.
#pragma once

#include <cstdint>
#include <string>

namespace qxut
{

// One of PROF_FORM_, by the first line of what is in the file, packed or not. PROF_FORM_TEXT for all else: INI files,
// no file, and files with names that only the library knows.
std::int32_t FormOfFile(const std::string& path);

} // namespace qxut
