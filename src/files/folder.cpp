#include "files/folder.h"

#include "files/path_separator.h"

#include <windows.h>
#include <winternl.h>

#include <limits>

namespace qx
{
namespace
{

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
constexpr DWORD kAttributeBits = 0xFFFF; // the part of CreateFileW's flags that are attributes

ULONG OptionsOf(DWORD flags, ULONG kind)
{
    return kind | FILE_OPEN_REPARSE_POINT | FILE_SYNCHRONOUS_IO_NONALERT |
           ((flags & FILE_FLAG_SEQUENTIAL_SCAN) != 0 ? FILE_SEQUENTIAL_ONLY : 0) |
           ((flags & FILE_FLAG_DELETE_ON_CLOSE) != 0 ? FILE_DELETE_ON_CLOSE : 0);
}

// Returns 0 for a handle that can't be queried.
DWORD AttributesOf(HANDLE handle)
{
    BY_HANDLE_FILE_INFORMATION info{};
    return GetFileInformationByHandle(handle, &info) ? info.dwFileAttributes : 0;
}

// Sets the attributes. With 0 the system would leave them unchanged.
bool SetAttributes(HANDLE file, DWORD attributes)
{
    FILE_BASIC_INFO info{};
    info.FileAttributes = attributes;
    return SetFileInformationByHandle(file, FileBasicInfo, &info, sizeof info) != FALSE;
}

} // namespace

clsFolder::clsFolder(const String& path)
{
    _handle.Take(CreateFileW(path.IsEmpty() ? L"." : path.Text(), FILE_READ_ATTRIBUTES, kShareAll, nullptr,
                     OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr),
        true);
    if (IsOpen() && (AttributesOf(_handle.Get()) & FILE_ATTRIBUTE_DIRECTORY) == 0)
    {
        _handle.Release();
        SetLastError(ERROR_DIRECTORY);
    }
}

bool clsFolder::IsSingleName(std::wstring_view name)
{
    return !name.empty() && name != L"." && name != L".." &&
           name.find_first_of(std::wstring_view(L"/\\\0", 3)) == std::wstring_view::npos &&
           name.size() <= std::numeric_limits<USHORT>::max() / sizeof(wchar_t);
}

clsFolder& clsFolder::operator=(clsFolder&& other) noexcept
{
    _handle.Take(other._handle.Detach(), true);
    return *this;
}

HANDLE clsFolder::Open(const String& name, const scEntryOpen& open) const
{
    if (!IsOpen() || !IsSingleName(name.View()))
    {
        SetLastError(IsOpen() ? ERROR_INVALID_NAME : ERROR_INVALID_HANDLE);
        return INVALID_HANDLE_VALUE;
    }
    const auto length = static_cast<USHORT>(name.Length() * sizeof(wchar_t));
    UNICODE_STRING text{length, length, const_cast<wchar_t*>(name.Text())};
    OBJECT_ATTRIBUTES object{};
    object.Length = sizeof object;
    object.RootDirectory = _handle.Get();
    object.ObjectName = &text;
    object.Attributes = OBJ_CASE_INSENSITIVE;
    auto mode = PosixModeAttribute(open.mode.value_or(0));
    const bool passMode = kHasPosixFiles && open.mode.has_value();
    IO_STATUS_BLOCK status{};
    HANDLE handle = nullptr;
    const NTSTATUS result = NtCreateFile(&handle, open.access | FILE_READ_ATTRIBUTES | SYNCHRONIZE, &object, &status,
        nullptr, open.flags & kAttributeBits, open.share, open.disposition, OptionsOf(open.flags, open.kind),
        passMode ? mode.data() : nullptr, passMode ? static_cast<ULONG>(mode.size()) : 0);
    if (!NT_SUCCESS(result))
    {
        SetLastError(RtlNtStatusToDosError(result));
        return INVALID_HANDLE_VALUE;
    }
    return handle;
}

void clsFolder::OpenSubfolder(const clsFolder& parent, const String& name, std::optional<std::uint32_t> mode)
{
    const DWORD access = kHasPosixFiles && mode ? FILE_WRITE_EA : 0; // RestrictMode needs this right
    const HANDLE handle = parent.Open(name, {access, kShareAll, FILE_OPEN_IF, 0, FILE_DIRECTORY_FILE, mode});
    _handle.Take(handle, true);
    if (IsOpen() &&
        (AttributesOf(handle) & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT)) != FILE_ATTRIBUTE_DIRECTORY)
    {
        _handle.Release();
        SetLastError(kErrorIsLink);
    }
}

HANDLE clsFolder::CreateNew(
    const String& name, DWORD access, DWORD share, DWORD flags, std::optional<std::uint32_t> mode) const
{
    const HANDLE handle = Open(name, {access, share, FILE_CREATE, flags, FILE_NON_DIRECTORY_FILE, mode});
    if (handle == INVALID_HANDLE_VALUE && GetLastError() == ERROR_ALREADY_EXISTS)
        SetLastError(ERROR_FILE_EXISTS);
    return handle;
}

HANDLE clsFolder::OpenExisting(const String& name, DWORD access, DWORD share, DWORD flags) const
{
    clsGenericHandleObjectAutoRelease file(
        Open(name, {access, share, FILE_OPEN, flags, FILE_NON_DIRECTORY_FILE, {}}), true);
    if (!file.IsValid())
        return INVALID_HANDLE_VALUE;
    if ((AttributesOf(file.Get()) & FILE_ATTRIBUTE_REPARSE_POINT) != 0 || GetFileType(file.Get()) != FILE_TYPE_DISK)
    {
        file.Release();
        SetLastError(kErrorIsLink);
        return INVALID_HANDLE_VALUE;
    }
    return file.Detach();
}

bool clsFolder::Remove(const String& name) const
{
    const clsGenericHandleObjectAutoRelease entry(
        Open(name, {DELETE | FILE_WRITE_ATTRIBUTES, kShareAll, FILE_OPEN, 0, FILE_NON_DIRECTORY_FILE, {}}), true);
    if (!entry.IsValid())
        return false;
    const DWORD attributes = AttributesOf(entry.Get());
    if ((attributes & (FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_REPARSE_POINT)) == FILE_ATTRIBUTE_READONLY &&
        !ClearReadOnly(entry.Get(), attributes))
        return false;
    return SetDeletedOnClose(entry.Get(), true);
}

bool clsFolder::Contains(const String& name) const
{
    return clsGenericHandleObjectAutoRelease(Open(name, {0, kShareAll, FILE_OPEN, 0, 0, {}}), true).IsValid();
}

bool clsFolder::IsLink(const String& name) const
{
    const clsGenericHandleObjectAutoRelease entry(Open(name, {0, kShareAll, FILE_OPEN, 0, 0, {}}), true);
    return entry.IsValid() && (AttributesOf(entry.Get()) & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
}

bool SetDeletedOnClose(HANDLE file, bool isDeleted)
{
    FILE_DISPOSITION_INFO info{};
    info.DeleteFile = isDeleted;
    return SetFileInformationByHandle(file, FileDispositionInfo, &info, sizeof info) != FALSE;
}

bool ClearReadOnly(HANDLE file, DWORD attributes)
{
    const DWORD others = attributes & ~static_cast<DWORD>(FILE_ATTRIBUTE_READONLY);
    return SetAttributes(file, others == 0 ? DWORD{FILE_ATTRIBUTE_NORMAL} : others);
}

bool SetReadOnly(HANDLE file)
{
    return SetAttributes(file, FILE_ATTRIBUTE_READONLY);
}

} // namespace qx
