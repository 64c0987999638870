#include <winternl.h>

#include "base/fail.h"
#include "base/handle_table.h"
#include "files/file_object.h"
#include "files/metadata.h"
#include "files/open_beneath.h"
#include "files/path.h"
#include "files/relative_open.h"
#include "files/temp_folder.h"
#include "time/file_time.h"

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

using namespace qxplatform;

namespace
{

constexpr std::string_view kModeName = "$LXMOD";
constexpr mode_t kModeBits = 0777;
constexpr mode_t kUsualFolderMode = 0777;

// Returns the status for a system error, by the published mapping.
constexpr NTSTATUS StatusOf(DWORD error)
{
    return error == ERROR_SUCCESS ? 0 : static_cast<NTSTATUS>(0xC0070000u | error);
}

// Returns false if the attributes are damaged or contain anything but a mode.
bool ReadMode(const void* buffer, ULONG length, std::optional<mode_t>& mode)
{
    if (buffer == nullptr || length == 0)
        return true;
    constexpr std::size_t kHead = offsetof(FILE_FULL_EA_INFORMATION, EaName);
    constexpr std::size_t kValueAt = kHead + kModeName.size() + 1;
    FILE_FULL_EA_INFORMATION head{};
    if (length < kValueAt + sizeof(ULONG))
        return false;
    std::memcpy(&head, buffer, kHead);
    const char* const bytes = static_cast<const char*>(buffer);
    if (head.NextEntryOffset != 0 || head.EaValueLength != sizeof(ULONG) ||
        std::string_view(bytes + kHead, head.EaNameLength) != kModeName)
        return false;
    ULONG value = 0;
    std::memcpy(&value, bytes + kValueAt, sizeof value);
    mode = value & kModeBits;
    return true;
}

// Returns the bytes of a name that is a single component, or nothing.
std::string ComponentOf(const UNICODE_STRING& text)
{
    const std::u16string_view name = View(text.Buffer, text.Length / sizeof(WCHAR));
    if (name.empty() || name == u"." || name == u".." || name.find_first_of(u"/\\\0", 0, 3) != name.npos)
        return {};
    return NativeName(name);
}

// The arguments of NtCreateFile.
struct NativeOpen
{
    Ref<FileObject> folder;
    std::string name;
    DWORD access = 0;
    DWORD share = 0;
    ULONG disposition = 0;
    ULONG options = 0;
    ULONG attributes = 0;
    std::optional<mode_t> mode;

    bool Has(ULONG option) const { return (options & option) != 0; }
};

DWORD OpenFolder(const NativeOpen& arguments, HANDLE& handle, bool& isNew)
{
    const int parent = arguments.folder->descriptor();
    if (arguments.disposition != FILE_OPEN)
    {
        isNew = mkdirat(parent, arguments.name.c_str(), arguments.mode.value_or(kUsualFolderMode)) == 0;
        if (!isNew && (errno != EEXIST || arguments.disposition == FILE_CREATE))
            return ErrorFromErrno(errno);
    }
    Descriptor folder(OpenBeneath(parent, arguments.name, O_PATH, 0));
    struct stat info
    {
    };
    if (!folder || fstat(folder.Get(), &info) != 0)
        return ErrorFromErrno(errno);
    if (!S_ISDIR(info.st_mode) && !S_ISLNK(info.st_mode))
        return ERROR_DIRECTORY;
    // As in CreateDirectoryW: another user's folder must not be used.
    if (!isNew && info.st_uid != geteuid() && IsSharedTempFolder(parent))
        return ERROR_ACCESS_DENIED;
    const auto file = MakeObject<FileObject>(std::move(folder), FileObject::Options{});
    handle = AddHandle(file, arguments.access);
    return handle == nullptr ? GetLastError() : DWORD{ERROR_SUCCESS};
}

DWORD OpenFile(const NativeOpen& arguments, HANDLE& handle, bool& isNew)
{
    const DWORD disposition = arguments.disposition == FILE_CREATE ? DWORD{CREATE_NEW}
                              : arguments.disposition == FILE_OPEN ? DWORD{OPEN_EXISTING}
                                                                   : DWORD{OPEN_ALWAYS};
    const DWORD flags = arguments.attributes | (arguments.Has(FILE_SEQUENTIAL_ONLY) ? FILE_FLAG_SEQUENTIAL_SCAN : 0) |
                        (arguments.Has(FILE_DELETE_ON_CLOSE) ? FILE_FLAG_DELETE_ON_CLOSE : 0);
    return OpenRelative(arguments.folder, arguments.name,
        {arguments.access, arguments.share, disposition, flags, arguments.mode}, handle, isNew);
}

} // namespace

NTSTATUS NTAPI NtCreateFile(PHANDLE FileHandle, ACCESS_MASK DesiredAccess, POBJECT_ATTRIBUTES ObjectAttributes,
    PIO_STATUS_BLOCK IoStatusBlock, PLARGE_INTEGER, ULONG FileAttributes, ULONG ShareAccess, ULONG CreateDisposition,
    ULONG CreateOptions, PVOID EaBuffer, ULONG EaLength)
{
    constexpr ULONG kOptions = FILE_DIRECTORY_FILE | FILE_NON_DIRECTORY_FILE | FILE_SEQUENTIAL_ONLY |
                               FILE_SYNCHRONOUS_IO_NONALERT | FILE_DELETE_ON_CLOSE | FILE_OPEN_REPARSE_POINT;
    NativeOpen arguments{LookUp<FileObject>(ObjectAttributes->RootDirectory),
        ComponentOf(*ObjectAttributes->ObjectName), FileObject::MapFileAccess(DesiredAccess), ShareAccess,
        CreateDisposition, CreateOptions, FileAttributes, {}};
    if (!arguments.folder)
        return StatusOf(ERROR_INVALID_HANDLE);
    if (arguments.name.empty())
        return StatusOf(ERROR_INVALID_NAME);
    if (!arguments.Has(FILE_OPEN_REPARSE_POINT) || (CreateOptions & ~kOptions) != 0 || CreateDisposition < FILE_OPEN ||
        CreateDisposition > FILE_OPEN_IF)
        return StatusOf(ERROR_NOT_SUPPORTED);
    if (!ReadMode(EaBuffer, EaLength, arguments.mode))
        return StatusOf(ERROR_EAS_NOT_SUPPORTED);
    bool isNew = false;
    const bool isFolder = arguments.Has(FILE_DIRECTORY_FILE);
    const DWORD error = isFolder ? OpenFolder(arguments, *FileHandle, isNew) : OpenFile(arguments, *FileHandle, isNew);
    IoStatusBlock->Status = StatusOf(error);
    IoStatusBlock->Information = isNew ? FILE_CREATED : FILE_OPENED;
    return StatusOf(error);
}

NTSTATUS NTAPI NtQueryInformationFile(HANDLE FileHandle, PIO_STATUS_BLOCK IoStatusBlock, PVOID FileInformation,
    ULONG Length, FILE_INFORMATION_CLASS FileInformationClass)
{
    constexpr int kStatLx = 70;
    constexpr DWORD kHasAll = 0xF; // owner, group, mode and device are valid
    struct StatLx
    {
        ULONGLONG id, creation, access, write, change, allocation, size;
        ULONG attributes, reparseTag, links, effectiveAccess, flags, user, group, mode, major, minor;
    } result{};
    static_assert(sizeof result == 96);
    if (static_cast<int>(FileInformationClass) != kStatLx)
        return StatusOf(ERROR_NOT_SUPPORTED);
    if (Length < sizeof result)
        return StatusOf(ERROR_INSUFFICIENT_BUFFER);
    const Ref<FileObject> file = LookUp<FileObject>(FileHandle);
    struct stat info
    {
    };
    Metadata metadata;
    if (!file)
        return StatusOf(ERROR_INVALID_HANDLE);
    if (fstat(file->descriptor(), &info) != 0 || !ReadMetadata(PathOfDescriptor(file->descriptor()), metadata))
        return StatusOf(ErrorFromErrno(errno));
    result = {metadata.index, static_cast<ULONGLONG>(UnitsOf(metadata.creation)),
        static_cast<ULONGLONG>(UnitsOf(metadata.access)), static_cast<ULONGLONG>(UnitsOf(metadata.write)),
        static_cast<ULONGLONG>(UnitsOf(metadata.write)), static_cast<ULONGLONG>(info.st_blocks) * 512, metadata.size,
        metadata.attributes, 0, metadata.links, 0, kHasAll, info.st_uid, info.st_gid, info.st_mode, major(info.st_rdev),
        minor(info.st_rdev)};
    std::memcpy(FileInformation, &result, sizeof result);
    *IoStatusBlock = {{0}, sizeof result};
    return 0;
}

NTSTATUS NTAPI NtSetEaFile(HANDLE FileHandle, PIO_STATUS_BLOCK IoStatusBlock, PVOID Buffer, ULONG Length)
{
    std::optional<mode_t> mode;
    if (!ReadMode(Buffer, Length, mode) || !mode)
        return StatusOf(ERROR_EAS_NOT_SUPPORTED);
    const Ref<FileObject> file = LookUp<FileObject>(FileHandle, FILE_WRITE_EA);
    if (!file)
        return StatusOf(GetLastError());
    // Change the mode by the descriptor's path, because the descriptor may have been opened for attributes only.
    if (chmod(PathOfDescriptor(file->descriptor()).c_str(), *mode) != 0)
        return StatusOf(ErrorFromErrno(errno));
    *IoStatusBlock = {{0}, 0};
    return 0;
}

ULONG NTAPI RtlNtStatusToDosError(NTSTATUS Status)
{
    constexpr ULONG kUnknown = 317; // ERROR_MR_MID_NOT_FOUND
    const auto status = static_cast<ULONG>(Status);
    return status == 0 ? ERROR_SUCCESS : status >> 16 == 0xC007 ? status & 0xFFFF : kUnknown;
}
