// A private folder for a test, and raw file access without the library's file class.
#pragma once

#include "core/text/string.h"
#include "files/file_finder.h"
#include "files/path_separator.h"

#include <windows.h>

#include <atomic>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>

namespace qxtest
{

inline void MakeFile(const qx::String& path, std::string_view bytes)
{
    const HANDLE file =
        CreateFileW(path.Text(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    DWORD written = 0;
    WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
    CloseHandle(file);
}

// Opens an existing file for reading. Others may open it as far as `share` permits.
inline HANDLE OpenToRead(const qx::String& path, DWORD share = 0)
{
    return CreateFileW(path.Text(), GENERIC_READ, share, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
}

inline std::filesystem::path NativePath(const qx::String& path)
{
    return std::filesystem::u8path(path.NarrowText()); // ASCII characters only
}

// A folder that is deleted with its contents when the object is destroyed.
class TempFolder
{
public:
    TempFolder()
    {
        static std::atomic<int> number = 0;
        wchar_t temp[MAX_PATH + 1] = {};
        GetTempPathW(MAX_PATH, temp);
        _path.Format(L"%sqxut-test-%d-%d", temp, static_cast<int>(GetCurrentProcessId()), ++number);
        CreateDirectoryW(_path.Text(), nullptr);
    }
    ~TempFolder()
    {
        for (qx::FileFinder finder(Path(L"*"), false); finder.Next();)
            SetFileAttributesW(Path(finder.Name()).Text(), FILE_ATTRIBUTE_NORMAL); // windows keeps read-only files
        std::error_code ignored;
        std::filesystem::remove_all(NativePath(_path), ignored);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    const qx::String& Path() const { return _path; }
    qx::String Path(const wchar_t* name) const
    {
        qx::String path = _path;
        path.Append(qx::PATH_SEPARATOR);
        path.Append(name);
        return path;
    }

    // Creates a file with these bytes and returns its path.
    qx::String Make(const wchar_t* name, std::string_view bytes) const
    {
        qx::String path = Path(name);
        MakeFile(path, bytes);
        return path;
    }

private:
    qx::String _path;
};

inline bool Exists(const qx::String& path)
{
    return GetFileAttributesW(path.Text()) != INVALID_FILE_ATTRIBUTES;
}

inline void SetWriteTime(const qx::String& path, const FILETIME& time)
{
    const HANDLE file =
        CreateFileW(path.Text(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    SetFileTime(file, nullptr, nullptr, &time);
    CloseHandle(file);
}

// Returns the bytes of a file, or an empty text if it can't be opened.
inline std::string BytesOf(const qx::String& path)
{
    std::string bytes;
    const HANDLE file = OpenToRead(path, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE);
    if (file == INVALID_HANDLE_VALUE)
        return bytes;
    char part[4096];
    DWORD read = 0;
    while (ReadFile(file, part, sizeof part, &read, nullptr) && read != 0)
        bytes.append(part, read);
    CloseHandle(file);
    return bytes;
}

} // namespace qxtest
