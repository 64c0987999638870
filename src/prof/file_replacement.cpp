#include "prof/file_replacement.h"

#include "core/text/surrogates.h"
#include "core/text/text_hash.h"
#include "files/handle_holder.h"
#include "files/open_flags.h"
#include "prof/output.h"

#include <windows.h>

#include <atomic>
#include <string_view>

namespace qx
{

namespace
{

constexpr std::wstring_view kSideExtension = L".qxsave";
constexpr std::size_t kLongestSideName = 60;

// Set once the system has refused to replace an open file. Windows always refuses; the new file need not be written
// then.
std::atomic<bool> cannotReplaceOpenFiles = false;

std::size_t BeginOfName(std::wstring_view path)
{
    const std::size_t separator = path.find_last_of(L"/\\:"); // a name may follow a drive directly
    return separator == std::wstring_view::npos ? 0 : separator + 1;
}

// Returns the first part of a long name, without half of a surrogate pair at its end.
std::wstring_view Shortened(std::wstring_view name)
{
    const bool splitsPair = name.size() > kLongestSideName && IsLowSurrogate(name[kLongestSideName]) &&
                            IsHighSurrogate(name[kLongestSideName - 1]);
    return name.substr(0, kLongestSideName - (splitsPair ? 1 : 0));
}

// Returns the path of the new file. It depends only on the target, so that a file that a killed process has left is
// replaced.
String SideNameOf(const String& path)
{
    const std::wstring_view all = path.View();
    const std::size_t begin = BeginOfName(all);
    const std::wstring_view name = all.substr(begin);
    String side = String(all.substr(0, begin)) + L"." + String(Shortened(name));
    if (name.size() > kLongestSideName)
        side += String(String::kFormatted, L"~%08x", static_cast<unsigned>(TextHash(name)));
    return side + String(kSideExtension);
}

// A new file beside the target. It is deleted unless it was moved to the target's name.
class clsSideFile
{
public:
    // `name` is the name that the file object reports to callers: the target's. A private file can't be read by other
    // users until it takes over the access rights of the target.
    clsSideFile(const String& path, const String& name, FileShare share, bool isPrivate) : _name(SideNameOf(path))
    {
        clsGenericHandleObjectAutoRelease handle(Create(share, isPrivate), true);
        // The deletion fails if another save is currently writing a new file of this name.
        if (!handle.IsValid() && GetLastError() == ERROR_FILE_EXISTS && DeleteFileW(_name.Text()))
            handle.Take(Create(share, isPrivate), true);
        if (!handle.IsValid())
        {
            _isBusy = GetLastError() == ERROR_SHARING_VIOLATION;
            return;
        }
        _file = new clsFileRW(handle.Get(), name);
        handle.Detach();
    }
    clsSideFile(const clsSideFile&) = delete;
    clsSideFile& operator=(const clsSideFile&) = delete;
    ~clsSideFile()
    {
        if (!_file || _isMoved)
            return;
        _file->Close();
        DeleteFileW(_name.Text());
    }

    bool IsOpen() const { return static_cast<bool>(_file); }
    // Returns the outcome if the file isn't open.
    FileReplacement Failure() const { return _isBusy ? FileReplacement::Busy : FileReplacement::Impossible; }
    const String& Name() const { return _name; }
    const clsAutoRelease<clsFile*>& File() const { return _file; }

    bool Fill(const clsProfOutput& content) const
    {
        return content.ReplaceContentOf(*_file) && FlushFileBuffers(_file->GetHandle());
    }
    void SetMoved() { _isMoved = true; }

private:
    HANDLE Create(FileShare share, bool isPrivate) const
    {
        return CreateFileW(_name.Text(), GENERIC_READ | GENERIC_WRITE, SystemShare(share), nullptr, CREATE_NEW,
            SystemFlags(isPrivate ? kFileAttributeTemporary | kFileSequentialScan : std::uint32_t{kFileData}), nullptr);
    }

    String _name;
    clsAutoRelease<clsFile*> _file;
    bool _isMoved = false;
    bool _isBusy = false;
};

bool ReadInformation(HANDLE file, BY_HANDLE_FILE_INFORMATION& information)
{
    return GetFileInformationByHandle(file, &information) != FALSE;
}

} // namespace

FileReplacement ReplaceFileOf(
    clsFile& target, const clsProfOutput& content, FileShare share, clsAutoRelease<clsFile*>& successor)
{
    BY_HANDLE_FILE_INFORMATION information{};
    if (cannotReplaceOpenFiles || target.GetStream() != nullptr || GetFileType(target.GetHandle()) != FILE_TYPE_DISK ||
        !ReadInformation(target.GetHandle(), information))
        return FileReplacement::Impossible;
    const String path = FinalPathOf(target);
    if (path.IsEmpty())
        return GetLastError() == ERROR_FILE_NOT_FOUND ? FileReplacement::Busy : FileReplacement::Impossible;
    if (information.nNumberOfLinks != 1)
        return FileReplacement::Impossible;
    clsSideFile side(path, target.GetName(), share, true);
    if (!side.IsOpen() || !side.File()->Lock(0, 1))
        return FileReplacement::Impossible;
    if (!side.Fill(content))
        return FileReplacement::Failed;
    if (!ReplaceFileW(path.Text(), side.Name().Text(), nullptr, REPLACEFILE_WRITE_THROUGH, nullptr, nullptr))
    {
        const DWORD error = GetLastError();
        if (error == ERROR_SHARING_VIOLATION || error == ERROR_UNABLE_TO_REMOVE_REPLACED)
            cannotReplaceOpenFiles = true;
        return FileReplacement::Impossible;
    }
    side.SetMoved();
    successor = side.File();
    return FileReplacement::Done;
}

FileReplacement CreateFileOf(const String& name, const clsProfOutput& content)
{
    clsSideFile side(name, name, FileShare::None, false);
    if (!side.IsOpen())
        return side.Failure();
    if (!side.Fill(content))
        return FileReplacement::Failed;
    // Moves the new file while it is open, because another save can't remove an open file. If the system refuses to
    // move an open file, as Windows does, closes it and tries again.
    if (!MoveFileExW(side.Name().Text(), name.Text(), MOVEFILE_WRITE_THROUGH))
    {
        if (GetLastError() != ERROR_SHARING_VIOLATION)
            return FileReplacement::Impossible;
        side.File()->Close();
        if (!MoveFileExW(side.Name().Text(), name.Text(), MOVEFILE_WRITE_THROUGH))
            return FileReplacement::Impossible;
    }
    side.SetMoved();
    return FileReplacement::Done;
}

String FinalPathOf(clsFile& file)
{
    String path;
    const HANDLE handle = file.GetHandle();
    const DWORD size = GetFinalPathNameByHandleW(handle, nullptr, 0, 0);
    if (size == 0)
        return path;
    const DWORD length = GetFinalPathNameByHandleW(handle, path.GetBuffer(size), size, 0);
    path.ReleaseBuffer(length < size ? length : 0);
    return path;
}

bool IsFileOfName(clsFile& file, const String& name)
{
    constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    const clsGenericHandleObjectAutoRelease named(
        CreateFileW(name.Text(), FILE_READ_ATTRIBUTES, kShareAll, nullptr, OPEN_EXISTING, 0, nullptr), true);
    BY_HANDLE_FILE_INFORMATION one{};
    BY_HANDLE_FILE_INFORMATION other{};
    // If a file can't be examined, assume that it is the same one.
    if (!named.IsValid())
        return GetLastError() != ERROR_FILE_NOT_FOUND;
    if (!ReadInformation(named.Get(), one) || !ReadInformation(file.GetHandle(), other))
        return true;
    return one.dwVolumeSerialNumber == other.dwVolumeSerialNumber && one.nFileIndexHigh == other.nFileIndexHigh &&
           one.nFileIndexLow == other.nFileIndexLow;
}

} // namespace qx
