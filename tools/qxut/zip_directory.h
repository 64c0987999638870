// What an archive holds, as its central directory tells.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace qxut
{

struct ZipEntry
{
    std::string name; // UTF-8
    std::uint64_t size = 0;
    std::uint64_t packed = 0;
    unsigned method = 0;
    bool isFolder = false;
    bool isEncrypted = false;
    std::string modified; // as in "2024-07-14 12:34:56", local time
};

// Fails if the file can't be read or is no archive.
std::vector<ZipEntry> ReadZipDirectory(const std::string& path);

} // namespace qxut
