// Separate files with debug information. They are searched on this machine only.
#pragma once

#include "dbghelp/elf_image.h"

#include <string>
#include <string_view>
#include <vector>

namespace qxplatform
{

// Returns the path of the file that belongs to an image, or an empty text. By build id below /usr/lib/debug and in the
// folders; then by the name of the image's link beside the image, in .debug, below /usr/lib/debug and in the folders. A
// file found by name must have the same build id or, if the image has none, the checksum of the link.
std::string FindDebugFile(
    const std::string& imagePath, const ElfHeaders& headers, const std::vector<std::string>& folders);

// Returns the path of the file that several files share their debug information with, or an empty text. `name` is
// relative to the folder of `debugPath`.
std::string FindSharedDebugFile(const std::string& debugPath, const std::string& name, std::string_view buildId,
    const std::vector<std::string>& folders);

} // namespace qxplatform
