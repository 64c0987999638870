#include "files/file.h"

#include "core/debug_line.h"
#include "core/developer_run.h"
#include "files/name_check.h"
#include "files/open_flags.h"

#include <cstdint>

namespace qx
{

namespace
{

constexpr wchar_t kNameRefused[] = L"file name is reserved by Windows";
constexpr wchar_t kNoFile[] = L"is a pipe or a device, not a file";
constexpr int kAttempts = 3;
constexpr DWORD kWaitForTemporary = 100; // ms

// Suppresses the system's message box about missing files.
class ErrorModeScope
{
public:
    ErrorModeScope() : _before(SetErrorMode(SEM_NOOPENFILEERRORBOX)) { SetErrorMode(_before | SEM_NOOPENFILEERRORBOX); }
    ~ErrorModeScope() { SetErrorMode(_before); }
    ErrorModeScope(const ErrorModeScope&) = delete;
    ErrorModeScope& operator=(const ErrorModeScope&) = delete;

private:
    UINT _before;
};

// Returns true for a pipe or a device. They are refused, because reading or writing them may never end, and they may
// not keep the data.
bool IsPipeOrDevice(HANDLE file)
{
    const DWORD type = GetFileType(file);
    return type == FILE_TYPE_PIPE || type == FILE_TYPE_CHAR;
}

bool IsSharingError(DWORD error)
{
    return error == ERROR_SHARING_VIOLATION || error == ERROR_LOCK_VIOLATION;
}

} // namespace

int clsFile::Open(
    const String& name, FileAccess access, FileDisposition disposition, FileShare share, std::uint32_t flags)
{
    Close();
    _name = name;
    _flags = flags;
    _errorKind = FileError::None;
    _errorText.Empty();

    if (disposition != FileDisposition::OpenExisting && access == FileAccess::Read)
    {
        DebugLine(L"creating a file without write access does not make much sense");
    }

    DWORD lastError = GetLastError();
    if (IsFileNameAllowed(_name))
    {
        lastError =
            TryToOpen(SystemAccess(access), SystemShare(share), SystemDisposition(disposition), SystemFlags(flags));
    }
    else
    {
        _errorKind = FileError::NameRefused;
        _errorText = kNameRefused;
    }

    if (UtilIsDeveloperRun() && !_name.IsEmpty() && !_errorText.IsEmpty())
    {
        DebugLine(L"clsFile::Open('%s') failed: '%s'", LogName(), _errorText.Text());
    }
    SetLastError(lastError);

    _ownsHandle = _handle.IsValid();
    return _ownsHandle ? 0 : -1;
}

// Returns the last error of the last attempt. The error kind and text of a failed attempt are kept even if a later
// attempt succeeds; they show why the open was delayed.
DWORD clsFile::TryToOpen(DWORD access, DWORD share, DWORD disposition, DWORD flags)
{
    DWORD error = NO_ERROR;
    for (int attempt = 0; attempt < kAttempts; ++attempt)
    {
        SetLastError(NO_ERROR);
        _handle.Take(CreateHandle(_name, access, share, disposition, flags), true);
        error = GetLastError();
        if (_handle.IsValid())
        {
            if (!IsPipeOrDevice(_handle.Get()))
            {
                break;
            }
            _handle.Release();
            _errorKind = FileError::Other;
            _errorText = kNoFile;
            return ERROR_BAD_FILE_TYPE;
        }
        _errorKind = ClassifyOpenError(error);
        _errorText = String::SystemErrorText(error);
        if ((flags & FILE_ATTRIBUTE_TEMPORARY) != 0 && IsSharingError(error))
        {
            Sleep(kWaitForTemporary);
        }
    }
    return error;
}

HANDLE clsFile::CreateHandle(const String& name, DWORD access, DWORD share, DWORD disposition, DWORD flags)
{
    const ErrorModeScope scope;
    _name = name;
    if (_name.IsEmpty())
    {
        return nullptr;
    }
    if (!IsFileNameAllowed(_name))
    {
        _errorKind = FileError::NameRefused;
        return nullptr;
    }
    return CreateFileW(_name.Text(), access, share, nullptr, disposition, flags, nullptr);
}

} // namespace qx
