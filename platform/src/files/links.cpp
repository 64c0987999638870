#include <ioapiset.h>
#include <winioctl.h>

#include "base/handle_table.h"
#include "files/file_object.h"

#include <cerrno>
#include <climits>
#include <cstring>
#include <string>

#include <fcntl.h>
#include <sys/stat.h>

using namespace qxplatform;

namespace
{

// REPARSE_DATA_BUFFER of a link of the Windows Subsystem for Linux. The bytes of the target follow.
struct LinkHead
{
    ULONG tag;
    USHORT length; // of the data after `reserved`
    USHORT reserved;
    ULONG version;
};

constexpr ULONG kLinkTag = 0xA000001D; // IO_REPARSE_TAG_LX_SYMLINK
constexpr ULONG kVersion = 2;
constexpr std::size_t kFixed = sizeof(LinkHead);
constexpr std::size_t kCountedHead = sizeof(ULONG); // the part of the head that `length` counts

BOOL ReadLink(const FileObject& file, void* buffer, DWORD size, DWORD& returned)
{
    char target[PATH_MAX];
    const ssize_t length = readlinkat(file.descriptor(), "", target, sizeof target);
    if (length < 0)
        return Fail(errno == EINVAL || errno == ENOENT ? DWORD{ERROR_NOT_A_REPARSE_POINT} : ErrorFromErrno(errno));
    const auto count = static_cast<std::size_t>(length);
    if (size < kFixed + count)
        return Fail(ERROR_INSUFFICIENT_BUFFER);
    const LinkHead head{kLinkTag, static_cast<USHORT>(kCountedHead + count), 0, kVersion};
    std::memcpy(buffer, &head, kFixed);
    std::memcpy(static_cast<char*>(buffer) + kFixed, target, count);
    returned = static_cast<DWORD>(kFixed + count);
    return TRUE;
}

// Replaces the empty file by a link of the same name. An entry that another process creates under the name in between
// is kept, and the call fails.
BOOL MakeLink(const FileObject& file, const void* buffer, DWORD size)
{
    LinkHead head{};
    if (size < kFixed)
        return Fail(ERROR_INVALID_PARAMETER);
    std::memcpy(&head, buffer, kFixed);
    if (head.tag != kLinkTag || head.version != kVersion || head.length + sizeof(ULONG) + 2 * sizeof(USHORT) != size)
        return Fail(ERROR_INVALID_PARAMETER);
    const std::string target(static_cast<const char*>(buffer) + kFixed, size - kFixed);
    const FileObject::Options& options = file.options();
    struct stat opened
    {
    };
    struct stat named
    {
    };
    if (!options.folder || target.find('\0') != target.npos)
        return Fail(ERROR_INVALID_PARAMETER);
    const int folder = options.folder->descriptor();
    const char* const name = options.name.c_str();
    if (fstat(file.descriptor(), &opened) != 0 || fstatat(folder, name, &named, AT_SYMLINK_NOFOLLOW) != 0)
        return FailErrno();
    if (!S_ISREG(opened.st_mode) || opened.st_size != 0 || opened.st_ino != named.st_ino ||
        opened.st_dev != named.st_dev)
        return Fail(ERROR_INVALID_PARAMETER);
    return (unlinkat(folder, name, 0) == 0 && symlinkat(target.c_str(), folder, name) == 0) || FailErrno();
}

} // namespace

BOOL WINAPI DeviceIoControl(HANDLE hDevice, DWORD dwIoControlCode, LPVOID lpInBuffer, DWORD nInBufferSize,
    LPVOID lpOutBuffer, DWORD nOutBufferSize, LPDWORD lpBytesReturned, LPOVERLAPPED)
{
    *lpBytesReturned = 0;
    if (dwIoControlCode == FSCTL_GET_REPARSE_POINT)
    {
        const Ref<FileObject> file = LookUp<FileObject>(hDevice);
        return file && ReadLink(*file, lpOutBuffer, nOutBufferSize, *lpBytesReturned);
    }
    if (dwIoControlCode == FSCTL_SET_REPARSE_POINT)
    {
        const Ref<FileObject> file = LookUp<FileObject>(hDevice, FILE_WRITE_DATA);
        return file && MakeLink(*file, lpInBuffer, nInBufferSize);
    }
    return Fail(ERROR_NOT_SUPPORTED);
}
