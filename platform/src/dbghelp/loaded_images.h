// The images of the calling process.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace qxplatform
{

struct LoadedImage
{
    std::uintptr_t base = 0;
    std::size_t size = 0;
    std::string path; // the name of the kernel's image isn't a path
    bool isFile = false;
};

// The program comes first.
std::vector<LoadedImage> ListLoadedImages();

} // namespace qxplatform
