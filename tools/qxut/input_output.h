// Reads and writes files and the standard streams as bytes.
#pragma once

#include <string>
#include <string_view>

namespace qxut
{

// Returns the contents of a file, or of the standard input for "-".
std::string ReadInput(const std::string& path);

// Replaces the contents of a file, or writes to the standard output for "-".
void WriteOutput(const std::string& path, std::string_view bytes);

} // namespace qxut
