// Detects the form of a profile file, which the library doesn't report.
#pragma once

#include <cstdint>
#include <string>

namespace qxut
{

// Returns a PROF_FORM_ value according to the first line of the contents, unpacked if necessary. Returns PROF_FORM_TEXT
// for anything else: INI files, missing files, and files with names that only the library understands.
std::int32_t FormOfFile(const std::string& path);

} // namespace qxut
