// clsFile::Stat, the properties of a file object as a stream.
#include "files/file.h"

#include "files/trace_frame.h"

#include <combaseapi.h>

#include <cstring>

namespace qx
{

namespace
{

constexpr HRESULT kNoAttributes = 2;

// Reads the folder entry, which has the same values, for files that can't be queried, for example because they are open
// without sharing.
bool ReadFolderEntry(const wchar_t* name, WIN32_FILE_ATTRIBUTE_DATA& attributes)
{
    WIN32_FIND_DATAW found = {};
    const HANDLE search = FindFirstFileW(name, &found);
    if (search == INVALID_HANDLE_VALUE)
    {
        return false;
    }
    FindClose(search);
    attributes.ftLastWriteTime = found.ftLastWriteTime;
    attributes.ftCreationTime = found.ftCreationTime;
    attributes.ftLastAccessTime = found.ftLastAccessTime;
    return true;
}

bool ReadAttributes(const wchar_t* name, WIN32_FILE_ATTRIBUTE_DATA& attributes)
{
    if (GetFileAttributesExW(name, GetFileExInfoStandard, &attributes))
    {
        return true;
    }
    const DWORD error = GetLastError();
    return error != ERROR_FILE_NOT_FOUND && error != ERROR_PATH_NOT_FOUND && ReadFolderEntry(name, attributes);
}

// Returns null if memory runs out. The record is valid without the name.
wchar_t* CopyForCaller(const String& text)
{
    const std::size_t bytes = (text.Length() + 1) * sizeof(wchar_t);
    void* const copy = CoTaskMemAlloc(bytes);
    if (copy != nullptr)
    {
        memcpy(copy, text.Text(), bytes);
    }
    return static_cast<wchar_t*>(copy);
}

} // namespace

HRESULT clsFile::Stat(STATSTG* record, DWORD flag)
{
    clsTraceFrame frame(L"clsFile::Stream::Stat(%#p)", record);
    if (_stream)
    {
        return frame.End(_stream->Stat(record, flag));
    }
    if (record == nullptr)
    {
        return frame.End(E_INVALIDARG);
    }
    *record = {};
    WIN32_FILE_ATTRIBUTE_DATA attributes = {};
    if (!ReadAttributes(_name.Text(), attributes))
    {
        return frame.End(kNoAttributes);
    }
    record->mtime = attributes.ftLastWriteTime;
    record->ctime = attributes.ftCreationTime;
    record->atime = attributes.ftLastAccessTime;
    if ((flag & STATFLAG_NONAME) == 0)
    {
        record->pwcsName = CopyForCaller(_name);
    }
    record->type = STGTY_STREAM;
    record->cbSize.QuadPart = static_cast<ULONGLONG>(GetSize());
    return frame.End(S_OK);
}

} // namespace qx
