// The IStream functions of clsFile.
#include "files/file.h"

#include "files/trace_frame.h"

#include <cstdint>
#include <cstring>

namespace qx
{

HRESULT clsFile::NonDelegatingQueryInterface(REFIID iid, void** object)
{
    if (object != nullptr && IsEqualIID(iid, IID_IStream))
    {
        *object = static_cast<IStream*>(this);
        NonDelegatingAddRef();
        return S_OK;
    }
    return QueryOwnInterface(static_cast<IStream*>(this), iid, object);
}

ULONG clsFile::NonDelegatingRelease()
{
    return ReleaseObject(this);
}

HRESULT clsFile::QueryInterface(REFIID iid, void** object)
{
    return NonDelegatingQueryInterface(iid, object);
}

ULONG clsFile::AddRef()
{
    return NonDelegatingAddRef();
}

ULONG clsFile::Release()
{
    return NonDelegatingRelease();
}

bool clsFile::MayWrite()
{
    return dynamic_cast<clsFileRW*>(this) != nullptr;
}

HRESULT clsFile::Read(void* buffer, ULONG count, ULONG* read)
{
    clsTraceFrame frame(L"clsFile::Stream::Read(%d)", count);
    HRESULT result = E_HANDLE;
    ULONG got = 0;
    if (_stream)
    {
        result = _stream->Read(buffer, count, &got);
    }
    else if (IsOpen())
    {
        got = Read(buffer, std::uint32_t{count});
        result = got < count ? S_FALSE : S_OK;
    }
    if (read != nullptr)
    {
        *read = got;
    }
    return frame.End(result, L"read %d bytes", got);
}

HRESULT clsFile::Write(const void* buffer, ULONG count, ULONG* written)
{
    clsTraceFrame frame(L"clsFile::Stream::Write(%d)", count);
    if (_stream)
    {
        return frame.End(_stream->Write(buffer, count, written));
    }
    if (written != nullptr)
    {
        *written = 0;
    }
    if (!IsOpen())
    {
        return frame.End(E_HANDLE);
    }
    if (!MayWrite())
    {
        return frame.End(E_ACCESSDENIED);
    }
    const std::int64_t total = Write(buffer, std::uint64_t{count}, kCurrentPosition);
    if (written != nullptr && total > 0)
    {
        *written = static_cast<ULONG>(total);
    }
    return frame.End(total < std::int64_t{count} ? S_FALSE : S_OK);
}

HRESULT clsFile::Seek(LARGE_INTEGER distance, DWORD origin, ULARGE_INTEGER* position)
{
    clsTraceFrame frame(L"clsFile::Stream::Seek(%I64d,%d)", distance.QuadPart, origin);
    if (_stream)
    {
        return frame.End(_stream->Seek(distance, origin, position));
    }
    if (!IsOpen())
    {
        return frame.End(E_HANDLE);
    }
    switch (origin)
    {
    case STREAM_SEEK_SET:
        Seek(distance.QuadPart);
        break;
    case STREAM_SEEK_CUR:
        MoveHandle(distance.QuadPart, FILE_CURRENT);
        break;
    case STREAM_SEEK_END:
        MoveHandle(distance.QuadPart, FILE_END);
        break;
    default:
        return frame.End(E_INVALIDARG);
    }
    if (position != nullptr)
    {
        position->QuadPart = static_cast<ULONGLONG>(Tell());
    }
    return frame.End(S_OK);
}

HRESULT clsFile::SetSize(ULARGE_INTEGER size)
{
    clsTraceFrame frame(L"clsFile::Stream::SetSize(%I64d)", size.QuadPart);
    if (_stream)
    {
        return frame.End(_stream->SetSize(size));
    }
    if (!IsOpen())
    {
        return frame.End(E_HANDLE);
    }
    if (!MayWrite())
    {
        return frame.End(E_ACCESSDENIED);
    }
    const auto newSize = static_cast<std::int64_t>(size.QuadPart);
    const std::int64_t before = Position();
    if (!MoveTo(newSize)) // otherwise the end would be set at the wrong place
    {
        return frame.End(E_INVALIDARG);
    }
    SetEOF();
    Seek(before < newSize ? before : 0);
    return frame.End(S_OK);
}

HRESULT clsFile::CopyTo(IStream* target, ULARGE_INTEGER count, ULARGE_INTEGER* read, ULARGE_INTEGER* written)
{
    clsTraceFrame frame(L"clsFile::Stream::CopyTo(%#p,%I64d)", target, count.QuadPart);
    if (!_stream)
    {
        return frame.End(E_NOTIMPL);
    }
    ULARGE_INTEGER readCount = {};
    ULARGE_INTEGER writtenCount = {};
    const HRESULT result = _stream->CopyTo(target, count, &readCount, &writtenCount);
    if (read != nullptr)
    {
        *read = readCount;
    }
    if (written != nullptr)
    {
        *written = writtenCount;
    }
    return frame.End(result, L"r=%I64d, w=%I64d", readCount.QuadPart, writtenCount.QuadPart);
}

HRESULT clsFile::Commit(DWORD flags)
{
    clsTraceFrame frame(L"clsFile::Stream::Commit(%u)", flags);
    if (!MayWrite())
    {
        return frame.End(S_OK);
    }
    bool done = false;
    if (_handle.IsValid())
    {
        done = FlushFileBuffers(_handle.Get()) != FALSE;
    }
    else if (_stream)
    {
        done = SUCCEEDED(_stream->Commit(STGC_DEFAULT));
    }
    else if (_storage)
    {
        done = SUCCEEDED(_storage->Commit(STGC_DEFAULT));
    }
    return frame.End(done ? S_OK : E_FAIL);
}

HRESULT clsFile::Revert()
{
    clsTraceFrame frame(L"clsFile::Stream::Revert()");
    return frame.End(_stream ? _stream->Revert() : E_NOTIMPL);
}

HRESULT clsFile::LockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER count, DWORD type)
{
    clsTraceFrame frame(L"clsFile::Stream::LockRegion(%I64u,%I64u)", offset.QuadPart, count.QuadPart);
    if (_stream)
    {
        return frame.End(_stream->LockRegion(offset, count, type));
    }
    const bool locked =
        _handle.IsValid() && LockFile(_handle.Get(), offset.LowPart, offset.HighPart, count.LowPart, count.HighPart);
    return frame.End(locked ? S_OK : E_NOTIMPL);
}

HRESULT clsFile::UnlockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER count, DWORD type)
{
    clsTraceFrame frame(L"clsFile::Stream::UnlockRegion(%I64u,%I64u)", offset.QuadPart, count.QuadPart);
    if (_stream)
    {
        return frame.End(_stream->UnlockRegion(offset, count, type));
    }
    const bool unlocked =
        _handle.IsValid() && UnlockFile(_handle.Get(), offset.LowPart, offset.HighPart, count.LowPart, count.HighPart);
    return frame.End(unlocked ? S_OK : E_NOTIMPL);
}

HRESULT clsFile::Clone(IStream** stream)
{
    clsTraceFrame frame(L"clsFile::Stream::Clone(%#p)", stream);
    return frame.End(_stream ? _stream->Clone(stream) : E_NOTIMPL);
}

} // namespace qx
