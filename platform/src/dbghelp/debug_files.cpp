#include "dbghelp/debug_files.h"

#include <array>
#include <cstdint>

#include <fcntl.h>
#include <unistd.h>

namespace qxplatform
{
namespace
{

constexpr char kSystemFolder[] = "/usr/lib/debug";

// Computes the checksum of .gnu_debuglink: the CRC of ISO 3309, as in gzip.
std::uint32_t ChecksumOf(const std::string& path)
{
    constexpr auto kTable = []
    {
        std::array<std::uint32_t, 256> table{};
        for (std::uint32_t value = 0; value < 256; ++value)
        {
            std::uint32_t rest = value;
            for (int bit = 0; bit < 8; ++bit)
                rest = (rest & 1) != 0 ? 0xEDB88320U ^ (rest >> 1) : rest >> 1;
            table[value] = rest;
        }
        return table;
    }();
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0)
        return 0;
    std::vector<unsigned char> block(1 << 16);
    std::uint32_t checksum = 0xFFFFFFFF;
    for (ssize_t length; (length = read(file, block.data(), block.size())) > 0;)
        for (ssize_t index = 0; index < length; ++index)
            checksum = kTable[(checksum ^ block[static_cast<std::size_t>(index)]) & 0xFF] ^ (checksum >> 8);
    close(file);
    return ~checksum;
}

std::string FolderOfPath(const std::string& path)
{
    return path.substr(0, path.rfind('/') + 1);
}

std::string NameOfBuildId(std::string_view buildId)
{
    constexpr char kDigits[] = "0123456789abcdef";
    std::string name = ".build-id/";
    for (std::size_t index = 0; index < buildId.size(); ++index)
    {
        const auto byte = static_cast<unsigned char>(buildId[index]);
        name += kDigits[byte >> 4];
        name += kDigits[byte & 15];
        if (index == 0)
            name += '/';
    }
    return name + ".debug";
}

bool HasBuildId(const std::string& path, std::string_view buildId)
{
    if (access(path.c_str(), R_OK) != 0)
        return false;
    const ElfImage image(path);
    return ReadElfHeaders(image.Get()).buildId == buildId;
}

std::string PathIn(const std::string& folder, const std::string& name)
{
    std::string path = folder;
    path += '/';
    path += name;
    return path;
}

std::string FindByBuildId(std::string_view buildId, const std::vector<std::string>& folders)
{
    if (buildId.size() < 2)
        return {};
    const std::string name = NameOfBuildId(buildId);
    if (std::string path = std::string(kSystemFolder) + '/' + name; HasBuildId(path, buildId))
        return path;
    for (const std::string& folder : folders)
        if (std::string path = PathIn(folder, name); HasBuildId(path, buildId))
            return path;
    return {};
}

} // namespace

std::string FindDebugFile(
    const std::string& imagePath, const ElfHeaders& headers, const std::vector<std::string>& folders)
{
    if (std::string path = FindByBuildId(headers.buildId, folders); !path.empty())
        return path;
    const std::string& link = headers.debugLink;
    if (link.empty() || link.find('/') != link.npos)
        return {};
    const std::string own = FolderOfPath(imagePath);
    std::vector<std::string> candidates = {own + link, own + ".debug/" + link};
    if (!own.empty() && own.front() == '/')
        candidates.push_back(kSystemFolder + own + link);
    for (const std::string& folder : folders)
        candidates.push_back(PathIn(folder, link));
    for (std::string& path : candidates)
    {
        if (path == imagePath || access(path.c_str(), R_OK) != 0)
            continue;
        if (headers.buildId.empty() ? ChecksumOf(path) == headers.debugLinkChecksum : HasBuildId(path, headers.buildId))
            return std::move(path);
    }
    return {};
}

std::string FindSharedDebugFile(const std::string& debugPath, const std::string& name, std::string_view buildId,
    const std::vector<std::string>& folders)
{
    if (std::string path = name.starts_with('/') ? name : FolderOfPath(debugPath) + name; HasBuildId(path, buildId))
        return path;
    return FindByBuildId(buildId, folders);
}

} // namespace qxplatform
