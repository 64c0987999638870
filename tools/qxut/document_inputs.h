// The files that a command line names.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace qxut
{

// Calls `receive` for each named file, and for the files below each named folder in the order of their names. Links to
// folders, pipes and devices below a folder are left out.
void ForEachFile(const std::vector<std::string>& names, const std::function<void(const std::string& file)>& receive);

} // namespace qxut
