// The images of the calling process. This file is part of the layer and of the debug-help library.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace qxplatform
{

struct LoadedImage
{
    std::uintptr_t begin = 0; // the start of a page
    std::size_t size = 0;     // up to the last byte of the last segment
    std::string path;         // the name of the kernel's image isn't a path

    bool IsFile() const { return path.find('/') != path.npos; }
};

// Returns all loaded images. The program comes first.
std::vector<LoadedImage> ListLoadedImages();

} // namespace qxplatform
