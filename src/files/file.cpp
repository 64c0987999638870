#include "files/file.h"

#include "core/debug_line.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <new>

namespace qx
{

namespace
{

constexpr std::uint32_t kLargestCall = std::numeric_limits<std::uint32_t>::max();
constexpr std::int64_t kLargestToldPosition = std::numeric_limits<std::uint32_t>::max();

} // namespace

clsFile::clsFile(
    const String& name, FileAccess access, FileDisposition disposition, FileShare share, std::uint32_t flags)
{
    Open(name, access, disposition, share, flags);
}

clsFile::clsFile(IStream* stream)
{
    AttachStream(stream);
}

clsFile::clsFile(HANDLE handle, const String& name) : _name(name), _handle(handle, true), _ownsHandle(true) {}

clsFile::~clsFile()
{
    if (IsOpen() && !_locks.IsEmpty())
    {
        DebugLine(L"portions of the file '%s' are still locked. they will be unlocked automatically...", LogName());
        while (const scFileLock* lock = _locks.First())
        {
            Unlock(*lock);
        }
    }
    Close();
}

int clsFile::AttachStream(IStream* stream)
{
    const clsAutoRelease<IStream*> held(stream); // keeps the stream alive if it is the one that is open now
    Close();
    _name.Empty();
    _stream = held;
    _flags = 0;
    _errorKind = FileError::None;
    if (!_stream)
    {
        return -1;
    }
    Seek(0);
    return 0;
}

void clsFile::Close()
{
    const bool deleteIt = (_flags & kFileDeleteOnClose) != 0 && !_name.IsEmpty();
    if (_handle.IsValid())
    {
        if (_ownsHandle)
        {
            _handle.Release();
        }
        else
        {
            _handle.Detach();
        }
        if (deleteIt)
        {
            DeleteFileW(_name.Text());
        }
    }
    _stream.Release();
    if (_storage)
    {
        if (deleteIt)
        {
            _storage->DestroyElement(_name.Text());
        }
        _storage.Release();
    }
    _ownsHandle = false;
}

bool clsFile::IsOpen() const
{
    return _handle.IsValid() || _storage || _stream;
}

const wchar_t* clsFile::LogName() const
{
    return _stream ? L"(Stream)" : _name.Text();
}

std::int64_t clsFile::GetSize()
{
    if (_handle.IsValid())
    {
        LARGE_INTEGER size = {};
        return GetFileSizeEx(_handle.Get(), &size) ? size.QuadPart : -1;
    }
    if (_stream)
    {
        STATSTG record = {};
        return SUCCEEDED(_stream->Stat(&record, STATFLAG_NONAME)) ? static_cast<std::int64_t>(record.cbSize.QuadPart)
                                                                  : -1;
    }
    return -1;
}

std::int64_t clsFile::Seek(std::int64_t position)
{
    LARGE_INTEGER distance = {};
    distance.QuadPart = position;
    if (_handle.IsValid())
    {
        LARGE_INTEGER reached = {};
        return SetFilePointerEx(_handle.Get(), distance, &reached, FILE_BEGIN) ? reached.QuadPart : 0;
    }
    if (_stream)
    {
        ULARGE_INTEGER reached = {};
        const HRESULT result = _stream->Seek(distance, STREAM_SEEK_SET, &reached);
        return SUCCEEDED(result) ? static_cast<std::int32_t>(reached.LowPart) : -1;
    }
    return -1;
}

std::int64_t clsFile::Tell()
{
    const std::int64_t position = Position();
    return _handle.IsValid() && position > kLargestToldPosition ? -1 : position;
}

std::int64_t clsFile::HandlePosition() const
{
    LARGE_INTEGER position = {};
    return SetFilePointerEx(_handle.Get(), LARGE_INTEGER{}, &position, FILE_CURRENT) ? position.QuadPart : -1;
}

std::int64_t clsFile::Position()
{
    if (_handle.IsValid())
    {
        return HandlePosition();
    }
    ULARGE_INTEGER position = {};
    if (_stream && SUCCEEDED(_stream->Seek(LARGE_INTEGER{}, STREAM_SEEK_CUR, &position)))
    {
        return static_cast<std::int64_t>(position.QuadPart);
    }
    return -1;
}

bool clsFile::MoveHandle(std::int64_t distance, DWORD origin)
{
    LARGE_INTEGER move = {};
    move.QuadPart = distance;
    return SetFilePointerEx(_handle.Get(), move, nullptr, origin) != FALSE;
}

// Like Seek, but reports every failure.
bool clsFile::MoveTo(std::int64_t position)
{
    if (_handle.IsValid())
    {
        return MoveHandle(position, FILE_BEGIN);
    }
    LARGE_INTEGER distance = {};
    distance.QuadPart = position;
    return _stream && SUCCEEDED(_stream->Seek(distance, STREAM_SEEK_SET, nullptr));
}

std::uint32_t clsFile::Read(void* buffer, std::uint32_t count)
{
    if (_handle.IsValid())
    {
        DWORD read = 0;
        return ReadFile(_handle.Get(), buffer, count, &read, nullptr) ? read : 0;
    }
    if (_stream)
    {
        ULONG read = 0;
        return SUCCEEDED(_stream->Read(buffer, count, &read)) ? read : 0;
    }
    return 0;
}

std::int64_t clsFile::Write(const void* buffer, std::uint64_t count, std::int64_t position)
{
    if (!_handle.IsValid() && !_stream)
    {
        return -1;
    }
    if (position != kCurrentPosition && !MoveTo(position))
    {
        return 0; // don't write to the wrong place
    }

    const auto* bytes = static_cast<const std::uint8_t*>(buffer);
    std::uint64_t total = 0;
    while (total < count)
    {
        const auto part = static_cast<std::uint32_t>(std::min<std::uint64_t>(count - total, kLargestCall));
        if (!(_handle.IsValid() ? WriteToHandle(bytes, part) : WriteToStream(bytes, part)))
        {
            break;
        }
        bytes += part;
        total += part;
    }
    return static_cast<std::int64_t>(total);
}

bool clsFile::WriteToHandle(const std::uint8_t* bytes, std::uint32_t count)
{
    DWORD written = 0;
    SetLastError(NO_ERROR);
    WriteFile(_handle.Get(), bytes, count, &written, nullptr);
    if (written == count)
    {
        return true;
    }
    LogWriteFailure(written, count, GetLastError());
    return false;
}

bool clsFile::WriteToStream(const std::uint8_t* bytes, std::uint32_t count)
{
    ULONG written = 0;
    const HRESULT result = _stream->Write(bytes, count, &written);
    if (SUCCEEDED(result) && written == count)
    {
        return true;
    }
    LogWriteFailure(written, count, static_cast<DWORD>(result));
    return false;
}

void clsFile::LogWriteFailure(std::uint32_t written, std::uint32_t wanted, DWORD error)
{
    DebugLine(L"clsFile(%s)::Write(): write failure... %d/%d (%s)", LogName(), written, wanted,
        String::SystemErrorText(error).Text());
}

std::int64_t clsFile::WriteBytes(const char* text, std::size_t length)
{
    return Write(text, length == kToTerminator ? strlen(text) : length);
}

std::int64_t clsFile::WriteChars(const wchar_t* text, std::size_t length)
{
    const std::size_t characters = length == kToTerminator ? wcslen(text) : length;
    const std::int64_t written = Write(text, std::uint64_t{characters} * sizeof(wchar_t));
    return written > 0 ? written / static_cast<std::int64_t>(sizeof(wchar_t)) : written;
}

void clsFile::SetEOF()
{
    if (_handle.IsValid())
    {
        if (!SetEndOfFile(_handle.Get()))
        {
            DebugLine(L"ERR: SetEOF() failed!");
        }
    }
    else if (_stream)
    {
        const std::int64_t position = Position();
        ULARGE_INTEGER size = {};
        size.QuadPart = static_cast<ULONGLONG>(position);
        if (position < 0 || FAILED(_stream->SetSize(size)))
        {
            DebugLine(L"ERR: Stream->SetEOF(%I64d) failed!", position);
        }
    }
}

UTFType clsFile::GetUTFType()
{
    const std::int64_t size = GetSize();
    if (size < 2)
    {
        return UTFType::Unknown;
    }
    if (Tell() != 0)
    {
        DebugLine(L"clsFile::GetUTFType(): file not at BOF!");
    }
    else
    {
        std::uint8_t head[3] = {};
        const std::uint32_t count = Read(head, size == 2 ? 2 : 3);
        const scByteOrderMark mark = FindByteOrderMark(head, count);
        Seek(mark.length);
        if (mark.type != UTFType::Unknown)
        {
            return mark.type;
        }
        if (const UTFType guess = GuessByZeroByte(head, count); guess != UTFType::Unknown)
        {
            return guess;
        }
    }
    return GuessUTFType(static_cast<std::uint32_t>(size));
}

// Returns Unknown for texts of up to 200 bytes, which are too short for a reliable guess. `count` is the low 32 bits of
// the file's size, because a single read can't return more.
UTFType clsFile::GuessUTFType(std::uint32_t count)
{
    constexpr std::uint32_t kShortest = 201;
    if (count < kShortest)
    {
        return UTFType::Unknown;
    }
    const std::unique_ptr<std::uint8_t[]> bytes(new (std::nothrow) std::uint8_t[std::size_t{count} + 1]);
    if (bytes == nullptr || Read(bytes.get(), count) != count)
    {
        return UTFType::Unknown;
    }
    bytes[count] = 0;
    const UTFType type = GuessByContent(bytes.get(), count);
    Seek(0);
    return type;
}

clsFileRWTempStream::clsFileRWTempStream(IStream* stream)
{
    AttachStream(stream);
    if (stream != nullptr)
    {
        stream->Release();
    }
}

} // namespace qx
