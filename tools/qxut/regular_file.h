// Opens regular files without blocking on pipes.
#pragma once

#include <cstdio>
#include <filesystem>
#include <memory>

namespace qxut
{

struct CloseFile
{
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using RegularFile = std::unique_ptr<std::FILE, CloseFile>;

// Opens a file for reading. Returns null if it can't be opened, and on linux if what was opened is no regular file:
// another process may have put a pipe in its place after the caller has looked at it.
RegularFile OpenRegularFile(const std::filesystem::path& path);

} // namespace qxut
