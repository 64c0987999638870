#include "files/posix_files.h"

#include "files/handle_holder.h"

#include <winioctl.h>
#include <winternl.h>

#include <cstddef>
#include <cstring>
#include <vector>

// Missing in the headers of some systems.
extern "C" NTSTATUS NTAPI NtSetEaFile(HANDLE, PIO_STATUS_BLOCK, PVOID, ULONG);

namespace qx
{
namespace
{

// FILE_STAT_LX_INFORMATION, which the headers of older systems lack.
struct scStatLx
{
    std::uint64_t id, creation, access, write, change, allocation, size;
    std::uint32_t attributes, reparseTag, links, effectiveAccess, flags, user, group, mode, deviceMajor, deviceMinor;
};
static_assert(sizeof(scStatLx) == 96);

constexpr auto kStatLxInformation = static_cast<FILE_INFORMATION_CLASS>(70);
constexpr std::uint32_t kPermissions = 0777;
constexpr std::uint32_t kHasMode = 4; // LX_FILE_METADATA_HAS_MODE

// REPARSE_DATA_BUFFER with the tag IO_REPARSE_TAG_LX_SYMLINK. The target follows.
struct scLinkHead
{
    std::uint32_t tag;
    std::uint16_t length;
    std::uint16_t reserved;
    std::uint32_t version;
};
constexpr std::uint32_t kLinkTag = 0xA000001D;
constexpr std::uint32_t kLinkVersion = 2;
constexpr std::size_t kUncounted = offsetof(scLinkHead, version);
constexpr std::size_t kMostLinkBytes = 16 * 1024; // the system's limit for this buffer

} // namespace

std::optional<std::uint32_t> PosixModeOf(HANDLE file)
{
    scStatLx info{};
    IO_STATUS_BLOCK status{};
    if (!NT_SUCCESS(NtQueryInformationFile(file, &status, &info, sizeof info, kStatLxInformation)) ||
        (info.flags & kHasMode) == 0)
        return std::nullopt;
    return info.mode;
}

std::array<unsigned char, 19> PosixModeAttribute(std::uint32_t mode)
{
    std::array<unsigned char, 19> bytes{0, 0, 0, 0, 0, 6, sizeof mode, 0, '$', 'L', 'X', 'M', 'O', 'D', 0};
    std::memcpy(&bytes[15], &mode, sizeof mode);
    return bytes;
}

bool SetPosixMode(HANDLE file, std::uint32_t mode)
{
    auto attribute = PosixModeAttribute(mode);
    IO_STATUS_BLOCK status{};
    const NTSTATUS result = NtSetEaFile(file, &status, attribute.data(), static_cast<ULONG>(attribute.size()));
    if (!NT_SUCCESS(result))
        SetLastError(RtlNtStatusToDosError(result));
    return NT_SUCCESS(result);
}

bool RestrictPosixMode(HANDLE file, std::uint32_t allowed)
{
    const std::optional<std::uint32_t> mode = PosixModeOf(file);
    return !mode || (*mode & kPermissions & ~allowed) == 0 || SetPosixMode(file, *mode & allowed);
}

std::optional<std::string> LinkTargetOf(const String& path)
{
    const clsGenericHandleObjectAutoRelease link(
        CreateFileW(path, FILE_READ_ATTRIBUTES, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
            OPEN_EXISTING, FILE_FLAG_OPEN_REPARSE_POINT | FILE_FLAG_BACKUP_SEMANTICS, nullptr),
        true);
    std::vector<char> buffer(kMostLinkBytes);
    scLinkHead head{};
    DWORD count = 0;
    if (!link.IsValid() || !DeviceIoControl(link.Get(), FSCTL_GET_REPARSE_POINT, nullptr, 0, buffer.data(),
                               static_cast<DWORD>(buffer.size()), &count, nullptr))
        return std::nullopt;
    std::memcpy(&head, buffer.data(), sizeof head);
    if (count < sizeof head || head.tag != kLinkTag || head.version != kLinkVersion)
        return std::nullopt;
    return std::string(buffer.data() + sizeof head, count - sizeof head);
}

bool MakeLink(HANDLE file, std::string_view target)
{
    if (target.size() > kMostLinkBytes - sizeof(scLinkHead))
    {
        SetLastError(ERROR_FILENAME_EXCED_RANGE);
        return false;
    }
    std::vector<char> buffer(sizeof(scLinkHead) + target.size());
    const scLinkHead head{kLinkTag, static_cast<std::uint16_t>(buffer.size() - kUncounted), 0, kLinkVersion};
    std::memcpy(buffer.data(), &head, sizeof head);
    std::memcpy(buffer.data() + sizeof head, target.data(), target.size());
    DWORD count = 0;
    return DeviceIoControl(file, FSCTL_SET_REPARSE_POINT, buffer.data(), static_cast<DWORD>(buffer.size()), nullptr, 0,
               &count, nullptr) != FALSE;
}

} // namespace qx
