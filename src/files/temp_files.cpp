#include "files/temp_files.h"

#include "core/critical_section.h"
#include "files/file_time.h"
#include "files/path_separator.h"
#include "files/paths.h"

#include <windows.h>

#include <wchar.h>
#include <x86intrin.h>

#include <cmath>
#include <iterator>

namespace qx
{
namespace
{

constexpr std::size_t pathLength = 260;
constexpr unsigned maxTries = 0xFFFFF;
constexpr unsigned maxDeniedTries = 1000;
constexpr double staleDays = 7.0;

bool IsSeparator(wchar_t c)
{
    return c == L'\\' || c == L'/';
}

String WithoutTrailingSeparators(String path)
{
    std::size_t length = path.Length();
    while (length > 0 && IsSeparator(path.CharAt(length - 1)))
        --length;
    return path.Left(length);
}

String AskTempFolder(bool longNames)
{
    wchar_t buffer[pathLength + 1];
    String folder;
    const DWORD length = GetTempPathW(static_cast<DWORD>(pathLength), buffer);
    if (length != 0 && length < pathLength)
        folder = buffer;
    else
    {
        const DWORD known = GetEnvironmentVariableW(L"TEMP", buffer, static_cast<DWORD>(pathLength));
        folder = known < pathLength ? String(buffer, 0, known) : String();
        if (folder.IsEmpty() || !IsSeparator(folder.CharAt(folder.Length() - 1)))
            folder += PATH_SEPARATOR;
    }
    if (longNames)
    {
        const DWORD longLength = GetLongPathNameW(folder, buffer, static_cast<DWORD>(pathLength));
        if (longLength != 0 && longLength < pathLength)
            folder = buffer;
    }
    return folder;
}

// The folder for new files, with a separator at its end.
String MakeSubfolders(const wchar_t* subfolders)
{
    String folder = WithoutTrailingSeparators(GetTempFolder(true));
    String parts(subfolders);
    parts.Replace(L'/', L'\\');
    for (const String& part : parts.Split(L'\\'))
    {
        if (part.IsEmpty())
            continue;
        folder += PATH_SEPARATOR;
        folder += part;
        // A file of that name doesn't do for a folder.
        if (!CreateDirectoryW(folder, nullptr) &&
            (GetLastError() != ERROR_ALREADY_EXISTS || ClassifyPath(folder) != PathClass::folder))
            return GetTempFolder(true);
    }
    folder += PATH_SEPARATOR;
    return folder;
}

// How far a time lies from now, in days.
double DaysFromNow(const FILETIME& time)
{
    FILETIME now;
    GetSystemTimeAsFileTime(&now);
    const double units = static_cast<double>(UnitsOf(now)) - static_cast<double>(UnitsOf(time));
    return std::fabs(units) / static_cast<double>(24 * unitsPerHour);
}

HANDLE OpenFile(const String& name, DWORD disposition, DWORD flags)
{
    return CreateFileW(name, GENERIC_READ | GENERIC_WRITE, 0, nullptr, disposition, flags, nullptr);
}

// A file that nobody has written to for a week is left over: it is emptied and taken over. Looked at twice, since
// someone may take it meanwhile.
HANDLE TakeStaleFile(const String& name, DWORD flags)
{
    WIN32_FILE_ATTRIBUTE_DATA data;
    if (!GetFileData(name, data) || DaysFromNow(data.ftLastWriteTime) <= staleDays)
        return INVALID_HANDLE_VALUE;
    // Opened without the deletion on close first: a file that is in use after all must not vanish with the handle.
    clsGenericHandleObjectAutoRelease probe(OpenFile(name, OPEN_EXISTING, flags & ~FILE_FLAG_DELETE_ON_CLOSE), true);
    FILETIME lastWrite;
    if (!probe.IsValid() || !GetFileTime(probe.Get(), nullptr, nullptr, &lastWrite) ||
        DaysFromNow(lastWrite) <= staleDays)
        return INVALID_HANDLE_VALUE;
    probe.Release();
    const HANDLE file = OpenFile(name, OPEN_EXISTING, flags);
    if (file != INVALID_HANDLE_VALUE)
        SetEndOfFile(file);
    return file;
}

// Whether another name may do where this one didn't. Told tries would only cost time where the folder is the obstacle.
bool IsWorthAnotherTry(DWORD error, unsigned tries)
{
    switch (error)
    {
    case ERROR_FILE_EXISTS:
    case ERROR_ALREADY_EXISTS:
    case ERROR_SHARING_VIOLATION:
        return true;
    case ERROR_ACCESS_DENIED: // also the answer for a name that is being deleted
        return tries < maxDeniedTries;
    default:
        return false;
    }
}

std::uint64_t TimeStamp()
{
    return __rdtsc();
}

} // namespace

String GetTempFolder(bool longNames)
{
    static clsCriticalSection lock;
    static String folders[2];
    clsCriticalSectionLock held(lock);
    String& folder = folders[longNames];
    if (folder.IsEmpty())
        folder = AskTempFolder(longNames);
    return folder;
}

String MakeTempFile(const wchar_t* subfolders, const wchar_t* prefix, const wchar_t* extension, bool longNames,
    clsGenericHandleObjectAutoRelease* holder, std::uint64_t (*nextNumber)())
{
    const String base = MakeSubfolders(subfolders) + prefix;
    String folder = GetPathDirectory(base);
    if (folder.IsEmpty())
        folder = GetTempFolder(longNames);
    String middle;
    middle.Format(L"_%d_", tempNameVersion);
    middle += GetPathStem(base);
    if (*extension == L'.')
        ++extension;

    DWORD flags = FILE_FLAG_SEQUENTIAL_SCAN | FILE_ATTRIBUTE_NORMAL;
    if (holder)
        flags |= FILE_FLAG_DELETE_ON_CLOSE | FILE_ATTRIBUTE_TEMPORARY;

    String name;
    for (unsigned tries = 1; tries <= maxTries; ++tries)
    {
        name.Format(L"%s%s%I64x.%s", folder.Text(), middle.Text(), nextNumber(), extension);
        HANDLE file = OpenFile(name, CREATE_NEW, flags);
        const DWORD error = GetLastError();
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
    MakeTempFile(tempSubfolder, prefix, extension, true, &holder);
    return holder.Detach();
}

} // namespace

clsFileRWTemp::clsFileRWTemp(const wchar_t* prefix, const wchar_t* extension)
    : clsFileRW(NewTempFile(prefix, extension))
{
}

} // namespace qx
