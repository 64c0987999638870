#include "files/temp_files.h"

#include "core/critical_section.h"
#include "core/forever.h"
#include "files/file_time.h"
#include "files/path_separator.h"
#include "files/paths.h"

#include <windows.h>

#include <wchar.h>
#if defined(__x86_64__)
#include <x86intrin.h>
#endif

#include <cmath>

namespace qx
{
namespace
{

constexpr std::size_t kCommonLength = 260;
constexpr unsigned kMaxTries = 0xFFFFF;
constexpr unsigned kMaxDeniedTries = 1000;
constexpr double kStaleDays = 7.0;

String WithoutTrailingSeparators(String path)
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
    String folders[2]; // as the system returns it, with long names
};

// Creates the subfolders. Returns the folder for new files, with a trailing separator.
String MakeSubfolders(const String& temp, const wchar_t* subfolders)
{
    String folder = WithoutTrailingSeparators(temp);
    String parts(subfolders);
    parts.Replace(L'/', L'\\');
    for (const String& part : parts.Split(L'\\'))
    {
        if (part.IsEmpty())
            continue;
        folder += PATH_SEPARATOR;
        folder += part;
        // A file with the folder's name is no substitute.
        if (!CreateDirectoryW(folder, nullptr) &&
            (GetLastError() != ERROR_ALREADY_EXISTS || ClassifyPath(folder) != PathClass::Folder))
            return temp;
    }
    folder += PATH_SEPARATOR;
    return folder;
}

// Returns the distance between a time and now, in days.
double DaysFromNow(const FILETIME& time)
{
    FILETIME now;
    GetSystemTimeAsFileTime(&now);
    const double units = static_cast<double>(UnitsOf(now)) - static_cast<double>(UnitsOf(time));
    return std::fabs(units) / static_cast<double>(24 * kUnitsPerHour);
}

HANDLE OpenFile(const String& name, DWORD disposition, DWORD flags)
{
    return CreateFileW(name, GENERIC_READ | GENERIC_WRITE, 0, nullptr, disposition, flags, nullptr);
}

// Takes over a file that hasn't been written for a week: opens it exclusively and truncates it. The age is checked
// twice, because another process may take the file in between.
HANDLE TakeStaleFile(const String& name, DWORD flags)
{
    WIN32_FILE_ATTRIBUTE_DATA data;
    if (!GetFileData(name, data) || DaysFromNow(data.ftLastWriteTime) <= kStaleDays)
        return INVALID_HANDLE_VALUE;
    // Opens the file without delete-on-close first. A file that is in use after all must not be deleted when the handle
    // is closed.
    clsGenericHandleObjectAutoRelease probe(OpenFile(name, OPEN_EXISTING, flags & ~FILE_FLAG_DELETE_ON_CLOSE), true);
    FILETIME lastWrite;
    if (!probe.IsValid() || !GetFileTime(probe.Get(), nullptr, nullptr, &lastWrite) ||
        DaysFromNow(lastWrite) <= kStaleDays)
        return INVALID_HANDLE_VALUE;
    probe.Release();
    const HANDLE file = OpenFile(name, OPEN_EXISTING, flags);
    if (file != INVALID_HANDLE_VALUE)
        SetEndOfFile(file);
    return file;
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

// The arguments of MakeTempFile except for the folder.
struct NewFile
{
    const wchar_t* prefix;
    const wchar_t* extension;
    bool longNames;
    clsGenericHandleObjectAutoRelease* holder;
    std::uint64_t (*nextNumber)();

    // Creates the file and returns its name. On failure, returns an empty text and sets `error`. `parent` must end with
    // a separator.
    String Make(const String& parent, DWORD& error) const
    {
        const String base = parent + prefix;
        String folder = GetPathDirectory(base);
        if (folder.IsEmpty())
            folder = GetTempFolder(longNames);
        String middle;
        middle.Format(L"_%d_", kTempNameVersion);
        middle += GetPathStem(base);

        DWORD flags = FILE_FLAG_SEQUENTIAL_SCAN | FILE_ATTRIBUTE_NORMAL;
        if (holder)
            flags |= FILE_FLAG_DELETE_ON_CLOSE | FILE_ATTRIBUTE_TEMPORARY;

        String name;
        for (unsigned tries = 1; tries <= kMaxTries; ++tries)
        {
            name.Format(L"%s%s%I64x.%s", folder.Text(), middle.Text(), nextNumber(), extension);
            HANDLE file = OpenFile(name, CREATE_NEW, flags);
            error = GetLastError();
            if (file == INVALID_HANDLE_VALUE && holder)
                file = TakeStaleFile(name, flags);
            if (file != INVALID_HANDLE_VALUE)
            {
                if (holder)
                    holder->Take(file, true);
                else
                    CloseHandle(file);
                return name;
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

bool IsTempSubfolderForeign()
{
    const String folder = GetTempSubfolder();
    // Creating the existing folder again fails with "access denied" only if it belongs to another user.
    return GetFileAttributesW(folder) != INVALID_FILE_ATTRIBUTES && !CreateDirectoryW(folder, nullptr) &&
           GetLastError() == ERROR_ACCESS_DENIED;
}

String MakeTempFile(const wchar_t* subfolders, const wchar_t* prefix, const wchar_t* extension, bool longNames,
    clsGenericHandleObjectAutoRelease* holder, std::uint64_t (*nextNumber)())
{
    const String temp = GetTempFolder(true);
    if (temp.IsEmpty())
        return String();
    if (*extension == L'.')
        ++extension;
    const NewFile file{prefix, extension, longNames, holder, nextNumber};
    const String folder = MakeSubfolders(temp, subfolders);
    DWORD error = ERROR_SUCCESS;
    String name = file.Make(folder, error);
    // A folder in which this user can't create files is treated like a folder that can't be created.
    if (name.IsEmpty() && error == ERROR_ACCESS_DENIED && folder != temp)
        name = file.Make(temp, error);
    return name;
}

String MakeTempFile(const wchar_t* subfolders, const wchar_t* prefix, const wchar_t* extension, bool longNames,
    clsGenericHandleObjectAutoRelease* holder)
{
    return MakeTempFile(subfolders, prefix, extension, longNames, holder, TimeStamp);
}

namespace
{

HANDLE NewTempFile(const wchar_t* prefix, const wchar_t* extension)
{
    clsGenericHandleObjectAutoRelease holder;
    MakeTempFile(kTempSubfolder, prefix, extension, true, &holder);
    return holder.Detach();
}

} // namespace

clsFileRWTemp::clsFileRWTemp(const wchar_t* prefix, const wchar_t* extension)
    : clsFileRW(NewTempFile(prefix, extension))
{
}

} // namespace qx
