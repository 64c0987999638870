// clsFile::Stat, the properties of a file object as a stream.
#include "files/file.h"

#include "files/paths.h"
#include "files/trace_frame.h"

#include <combaseapi.h>

#include <cstring>

namespace qx
{

namespace
{

constexpr HRESULT kNoAttributes = 2;

// Copies a name for the caller. Returns null if memory runs out; the record is valid without the name.
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
    if (!GetFileData(_name, attributes))
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
