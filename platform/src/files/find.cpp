#include <fileapi.h>

#include "base/handle_table.h"
#include "base/mutex.h"
#include "files/metadata.h"
#include "files/path.h"
#include "files/wildcard.h"

#include <algorithm>
#include <cerrno>
#include <memory>
#include <mutex>
#include <optional>

#include <dirent.h>

using namespace qxplatform;

namespace
{

struct CloseFolder
{
    void operator()(DIR* folder) const { closedir(folder); }
};

// A find in progress. With a pattern it reads a folder; without one it has already found its only file.
class FindObject : public Object
{
public:
    static constexpr ObjectType kObjectType = ObjectType::Find;

    FindObject() : Object(kObjectType) {}
    FindObject(std::string path, DIR* folder, std::u16string_view pattern)
        : Object(kObjectType),
          _path(std::move(path)),
          _folder(folder),
          _pattern(pattern)
    {
    }

    // Returns false at the end.
    bool Next(WIN32_FIND_DATAW& data);

private:
    std::string _path;
    std::unique_ptr<DIR, CloseFolder> _folder;
    std::optional<Wildcard> _pattern;
    Mutex _lock; // a position in a folder may be used by one thread at a time
};

void Fill(WIN32_FIND_DATAW& data, const Metadata& metadata, std::u16string_view name)
{
    data = {};
    data.dwFileAttributes = metadata.attributes;
    data.ftCreationTime = metadata.creation;
    data.ftLastAccessTime = metadata.access;
    data.ftLastWriteTime = metadata.write;
    data.nFileSizeHigh = static_cast<DWORD>(metadata.size >> 32);
    data.nFileSizeLow = static_cast<DWORD>(metadata.size);
    CopyOut(name, data.cFileName, MAX_PATH); // a file name on Linux has at most 255 bytes
}

bool FindObject::Next(WIN32_FIND_DATAW& data)
{
    const std::lock_guard guard(_lock);
    while (const dirent* const entry = _folder ? readdir(_folder.get()) : nullptr)
    {
        const std::u16string name = FromNative(entry->d_name);
        Metadata metadata;
        // Skip files that have been deleted since the folder was read.
        if (!_pattern->Matches(name) || !ReadMetadata(_path + '/' + entry->d_name, metadata, true))
            continue;
        if (entry->d_type == DT_LNK || entry->d_type == DT_UNKNOWN)
            metadata.attributes |= LinkAttribute(_path + '/' + entry->d_name);
        Fill(data, metadata, name);
        return true;
    }
    return false;
}

HANDLE FailFind(DWORD error)
{
    SetLastError(error);
    return INVALID_HANDLE_VALUE;
}

HANDLE Found(const Ref<Object>& find)
{
    const HANDLE handle = AddHandle(find);
    return handle == nullptr ? INVALID_HANDLE_VALUE : handle;
}

HANDLE FindOne(const NativePath& path, WIN32_FIND_DATAW& data)
{
    Metadata metadata;
    if (!ReadMetadata(path.text, metadata, true))
        return FailFind(PathError(errno, path.text));
    metadata.attributes |= LinkAttribute(path.text);
    Fill(data, metadata, FromNative(NameOf(path.text)));
    return Found(MakeObject<FindObject>());
}

} // namespace

HANDLE WINAPI FindFirstFileW(LPCWSTR lpFileName, LPWIN32_FIND_DATAW lpFindFileData)
{
    const NativePath path = ToFullNative(lpFileName);
    if (path.IsEmpty())
        return INVALID_HANDLE_VALUE;
    if (path.endsInSeparator)
        return FailFind(ERROR_FILE_NOT_FOUND);
    const std::u16string pattern = FromNative(NameOf(path.text));
    if (!Wildcard::IsIn(pattern))
        return FindOne(path, *lpFindFileData);

    const std::string folderPath = FolderOf(path.text);
    DIR* const folder = opendir(folderPath.c_str());
    if (folder == nullptr)
        return FailFind(errno == ENOENT    ? DWORD{ERROR_PATH_NOT_FOUND}
                        : errno == ENOTDIR ? DWORD{ERROR_DIRECTORY}
                                           : ErrorFromErrno(errno));
    const auto find = MakeObject<FindObject>(folderPath, folder, pattern);
    return find->Next(*lpFindFileData) ? Found(find) : FailFind(ERROR_FILE_NOT_FOUND);
}

BOOL WINAPI FindNextFileW(HANDLE hFindFile, LPWIN32_FIND_DATAW lpFindFileData)
{
    const Ref<FindObject> find = LookUp<FindObject>(hFindFile);
    return find && (find->Next(*lpFindFileData) || Fail(ERROR_NO_MORE_FILES));
}

BOOL WINAPI FindClose(HANDLE hFindFile)
{
    return CloseEntry(hFindFile, [](const Object& object) { return object.type == ObjectType::Find; });
}
