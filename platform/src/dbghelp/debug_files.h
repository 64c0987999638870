// Finds separate files with debug information, on this machine only.
#pragma once

#include "dbghelp/elf_image.h"

#include <string>
#include <string_view>
#include <vector>

namespace qxplatform
{

// Returns the path of the separate file with an image's debug information, or an empty text. Searches by build id below
// /usr/lib/debug and in the folders, and then by the name in the image's link: beside the image, in .debug, below
// /usr/lib/debug and in the folders. A file found by name must have the same build id or, if the image has none, the
// checksum of the link.
std::string FindDebugFile(
    const std::string& imagePath, const ElfHeaders& headers, const std::vector<std::string>& folders);

// Returns the path of the file with the debug information that several files share, or an empty text. `name` is
// relative to the folder of `debugPath`.
std::string FindSharedDebugFile(const std::string& debugPath, const std::string& name, std::string_view buildId,
    const std::vector<std::string>& folders);

} // namespace qxplatform
