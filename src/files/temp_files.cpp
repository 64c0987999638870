#include "files/temp_files.h"

#include "core/critical_section.h"
#include "core/forever.h"
#include "files/file_time.h"
#include "files/folder.h"
#include "files/path_separator.h"
#include "files/paths.h"
#include "files/posix_files.h"

#include <windows.h>

#include <wchar.h>
#if defined(__x86_64__)
#include <x86intrin.h>
#endif

#include <cmath>
#include <utility>

namespace qx
{
namespace
{

constexpr std::size_t kCommonLength = 260;
constexpr unsigned kMaxTries = 0xFFFFF;
constexpr unsigned kMaxDeniedTries = 1000;
constexpr double kStaleDays = 7.0;

String WithoutTrailingSeparators(const String& path)
{
    std::size_t length = path.Length();
    while (EndsInPathSeparator(path.View().substr(0, length)))
        --length;
    return path.Left(length);
}

// Calls a system function that fills a buffer and returns the length of the text, or the required size. Returns an
// empty text if the function returns 0.
template <class Call>
String TextFrom(Call call)
{
    String text;
    DWORD room = static_cast<DWORD>(kCommonLength);
    DWORD length = call(text.GetBuffer(room), room);
    if (length >= room)
    {
        room = length + 1;
        length = call(text.GetBuffer(room), room);
    }
    text.ReleaseBuffer(length < room ? length : 0); // if it grew again between the calls, give up
    return text;
}

// Returns an empty text if the system has no temp folder. Creating files fails then; they must not be created in the
// root.
String AskTempFolder(bool longNames)
{
    String folder = TextFrom([](wchar_t* buffer, DWORD room) { return GetTempPathW(room, buffer); });
    if (folder.IsEmpty())
    {
        folder = TextFrom([](wchar_t* buffer, DWORD room) { return GetEnvironmentVariableW(L"TEMP", buffer, room); });
        if (!folder.IsEmpty() && !EndsInPathSeparator(folder.View()))
            folder += PATH_SEPARATOR;
    }
    if (longNames && !folder.IsEmpty())
    {
        const String longForm =
            TextFrom([&](wchar_t* buffer, DWORD room) { return GetLongPathNameW(folder, buffer, room); });
        if (!longForm.IsEmpty())
            folder = longForm;
    }
    return folder;
}

// Never destroyed, because threads may still use it while the process ends.
struct KnownFolders
{
    clsCriticalSection lock{4000};
    String folders[2]; // [0] as the system returns it, [1] with long names
};

// A folder for new files, and its path with a separator at the end.
struct scOpenFolder
{
    clsFolder folder;
    String path;
};

// Opens a private folder, creating it if necessary. An older version may have left it open to other users.
clsFolder OpenPrivateFolder(const clsFolder& parent, const String& name)
{
    clsFolder folder;
    folder.OpenSubfolder(parent, name, kModePrivateFolder);
    return folder.IsOpen() && folder.RestrictMode(kModePrivateFolder) ? std::move(folder) : clsFolder();
}

// Opens the subfolders of the temp folder, creating them if necessary. If one can't be opened, created or made private,
// or is a link, the folder is the temp folder itself.
scOpenFolder OpenSubfolders(const String& temp, const wchar_t* subfolders)
{
    scOpenFolder opened{clsFolder(temp), WithoutTrailingSeparators(temp)};
    String parts(subfolders);
    parts.Replace(L'/', L'\\');
    for (const String& part : parts.Split(L'\\'))
    {
        if (part.IsEmpty())
            continue;
        opened.path += PATH_SEPARATOR;
        opened.path += part;
        clsFolder subfolder = OpenPrivateFolder(opened.folder, part);
        if (!subfolder.IsOpen())
            return {clsFolder(temp), temp};
        opened.folder = std::move(subfolder);
    }
    opened.path += PATH_SEPARATOR;
    return opened;
}

// Returns the distance between a time and now, in days.
double DaysFromNow(const FILETIME& time)
{
    FILETIME now;
    GetSystemTimeAsFileTime(&now);
    const double units = static_cast<double>(UnitsOf(now)) - static_cast<double>(UnitsOf(time));
    return std::fabs(units) / static_cast<double>(24 * kUnitsPerHour);
}

constexpr DWORD kReadAndWrite = GENERIC_READ | GENERIC_WRITE;

// Takes over a file that nobody has written to for a week, and empties it.
HANDLE TakeStaleFile(const clsFolder& folder, const String& name, DWORD flags)
{
    // Opened without deletion on close: a file that is in use after all must not vanish with the handle.
    clsGenericHandleObjectAutoRelease file(
        folder.OpenExisting(name, kReadAndWrite | DELETE, 0, flags & ~FILE_FLAG_DELETE_ON_CLOSE), true);
    FILETIME lastWrite;
    if (!file.IsValid() || !GetFileTime(file.Get(), nullptr, nullptr, &lastWrite) ||
        DaysFromNow(lastWrite) <= kStaleDays || !SetDeletedOnClose(file.Get(), true))
        return INVALID_HANDLE_VALUE;
    SetEndOfFile(file.Get());
    return file.Detach();
}

// Returns true if another name might succeed. The number of attempts after a denial is limited, because the folder may
// be the reason.
bool IsWorthAnotherTry(DWORD error, unsigned tries)
{
    switch (error)
    {
    case ERROR_FILE_EXISTS:
    case ERROR_ALREADY_EXISTS:
    case ERROR_SHARING_VIOLATION:
        return true;
    case ERROR_ACCESS_DENIED: // also returned for a name that is being deleted
        return tries < kMaxDeniedTries;
    default:
        return false;
    }
}

std::uint64_t TimeStamp()
{
#if defined(__x86_64__)
    return __rdtsc();
#else
    LARGE_INTEGER count;
    QueryPerformanceCounter(&count);
    return static_cast<std::uint64_t>(count.QuadPart);
#endif
}

// Returns false for a text that would lead out of the folder, or to a stream of another file.
bool IsPartOfName(std::wstring_view text)
{
    return text.find_first_of(L"/\\:") == std::wstring_view::npos;
}

// The arguments of MakeTempFile without the folder.
struct NewFile
{
    const wchar_t* prefix;
    const wchar_t* extension;
    clsGenericHandleObjectAutoRelease* holder;
    std::uint64_t (*nextNumber)();

    // Returns the path, or an empty text and the error.
    String Make(const scOpenFolder& parent, DWORD& error) const
    {
        DWORD access = kReadAndWrite;
        DWORD flags = FILE_FLAG_SEQUENTIAL_SCAN | FILE_ATTRIBUTE_NORMAL;
        if (holder)
        {
            access |= DELETE;
            flags |= FILE_FLAG_DELETE_ON_CLOSE | FILE_ATTRIBUTE_TEMPORARY;
        }
        const String stem = GetPathStem(prefix);
        String name;
        for (unsigned tries = 1; tries <= kMaxTries; ++tries)
        {
            name.Format(L"_%d_%s%I64x.%s", kTempNameVersion, stem.Text(), nextNumber(), extension);
            HANDLE file = parent.folder.CreateNew(name, access, 0, flags, kModePrivateFile);
            error = GetLastError();
            if (file == INVALID_HANDLE_VALUE && holder)
                file = TakeStaleFile(parent.folder, name, flags);
            if (file != INVALID_HANDLE_VALUE)
            {
                if (holder)
                    holder->Take(file, true);
                else
                    CloseHandle(file);
                return parent.path + name;
            }
            if (!IsWorthAnotherTry(error, tries))
                break;
        }
        return String();
    }
};

} // namespace

String GetTempFolder(bool longNames)
{
    static KnownFolders& known = MakeForever<KnownFolders>();
    const clsCriticalSectionLock held(known.lock);
    String& folder = known.folders[longNames];
    if (folder.IsEmpty())
        folder = AskTempFolder(longNames);
    return folder;
}

String GetTempSubfolder()
{
    return GetTempFolder(true) + kTempSubfolder;
}

HANDLE OpenActivityFile(const String& name)
{
    const clsFolder folder = OpenPrivateFolder(clsFolder(GetTempFolder(true)), kTempSubfolder);
    constexpr DWORD kFlags = FILE_FLAG_SEQUENTIAL_SCAN | FILE_ATTRIBUTE_NORMAL;
    const HANDLE created = folder.CreateNew(name, GENERIC_WRITE, FILE_SHARE_READ, kFlags, kModePrivateFile);
    if (created != INVALID_HANDLE_VALUE || GetLastError() != ERROR_FILE_EXISTS)
        return created;
    const HANDLE file = folder.OpenExisting(name, GENERIC_WRITE, FILE_SHARE_READ, kFlags);
    if (file != INVALID_HANDLE_VALUE)
        RestrictPosixMode(file, kModePrivateFile);
    return file;
}

bool IsTempSubfolderForeign()
{
    const String folder = GetTempSubfolder();
    // Creating the existing folder again fails with "access denied" only if it belongs to another user.
    return GetFileAttributesW(folder) != INVALID_FILE_ATTRIBUTES && !CreateDirectoryW(folder, nullptr) &&
           GetLastError() == ERROR_ACCESS_DENIED;
}

String MakeTempFile(const wchar_t* subfolders, const wchar_t* prefix, const wchar_t* extension,
    clsGenericHandleObjectAutoRelease* holder, std::uint64_t (*nextNumber)())
{
    const String temp = GetTempFolder(true);
    if (temp.IsEmpty() || !IsPartOfName(prefix) || !IsPartOfName(extension))
        return String();
    if (*extension == L'.')
        ++extension;
    const NewFile file{prefix, extension, holder, nextNumber};
    const scOpenFolder folder = OpenSubfolders(temp, subfolders);
    DWORD error = ERROR_SUCCESS;
    String name = file.Make(folder, error);
    // A folder in which this user may not create files is treated like one that can't be created.
    if (name.IsEmpty() && error == ERROR_ACCESS_DENIED && folder.path != temp)
        name = file.Make({clsFolder(temp), temp}, error);
    return name;
}

String MakeTempFile(const wchar_t* subfolders, const wchar_t* prefix, const wchar_t* extension,
    clsGenericHandleObjectAutoRelease* holder)
{
    return MakeTempFile(subfolders, prefix, extension, holder, TimeStamp);
}

namespace
{

HANDLE NewTempFile(const wchar_t* prefix, const wchar_t* extension)
{
    clsGenericHandleObjectAutoRelease holder;
    MakeTempFile(kTempSubfolder, prefix, extension, &holder);
    return holder.Detach();
}

} // namespace

clsFileRWTemp::clsFileRWTemp(const wchar_t* prefix, const wchar_t* extension)
    : clsFileRW(NewTempFile(prefix, extension))
{
}

} // namespace qx
