// clsFile, the common object for byte storage: a file opened by name, an adopted handle, or a caller's stream. It is an
// IStream itself, so that it can be passed to any COM consumer.
#pragma once

#include "containers/dlist.h"
#include "core/text/string.h"
#include "files/auto_release.h"
#include "files/handle_holder.h"
#include "files/iunknown_impl.h"
#include "files/utf_type.h"

#include <windows.h>

#include <objidl.h>

#include <cstddef>
#include <cstdint>
#include <optional>

namespace qx
{

enum class FileAccess
{
    Read = 0,
    Write = 1,
    ReadWrite = 2
};

enum class FileDisposition
{
    OpenExisting = 0,
    OpenAlways = 1,
    CreateAlways = 2
};

// The access that others have to the file while it is open.
enum class FileShare
{
    None = 0,
    Exclusive = 1, // same as None
    Read = 2,
    ReadWrite = 3
};

// Flag bits for opening a file.
enum FileFlag : std::uint32_t
{
    kFileWriteThrough = 1,
    kFileSequentialScan = 2,
    kFileDeleteOnClose = 4,
    kFileRandomAccess = 8,
    kFileAttributeNormal = 0x100,
    kFileAttributeHidden = 0x200,
    kFileAttributeReadOnly = 0x400,
    kFileAttributeTemporary = 0x800,

    kFileData = kFileAttributeNormal | kFileSequentialScan // used for all data files
};

// The reason why an open failed.
enum class FileError
{
    None = 0,
    PathNotFound = 1,
    InUse = 2,
    AlreadyExists = 3,
    AccessDenied = 4,
    Other = 5,
    NameRefused = 6 // the name is invalid; no open was attempted
};

// A byte range that is locked until Unlock is called.
struct scFileLock
{
    std::uint64_t offset = 0;
    std::uint64_t length = 0;

    friend bool operator==(const scFileLock&, const scFileLock&) = default;
};

// A file or stream. Not thread-safe, except for the reference count. No function throws.
//
// Normally either a file or a stream is open. If both are, the file is used.
//
// Vtable order: the three functions of INonDelegatingUnknown, CreateHandle, then the rest.
class clsFile : public clsIUnknownImpl, public IStream
{
public:
    static constexpr std::int64_t kCurrentPosition = -1;
    static constexpr std::size_t kToTerminator = ~std::size_t{0};

    clsFile() = default;
    // Success is reported by IsOpen().
    clsFile(const String& name, FileAccess access, FileDisposition disposition, FileShare share, std::uint32_t flags);
    explicit clsFile(IStream* stream);
    // Takes ownership of the handle.
    explicit clsFile(HANDLE handle, const String& name = String());

    HRESULT STDMETHODCALLTYPE NonDelegatingQueryInterface(REFIID iid, void** object) override;
    ULONG STDMETHODCALLTYPE NonDelegatingRelease() override;

protected:
    // Opens the file for Open; all arguments have the system's meaning. Returns null or INVALID_HANDLE_VALUE on failure
    // and sets the last error.
    virtual HANDLE CreateHandle(const String& name, DWORD access, DWORD share, DWORD disposition, DWORD flags);

public:
    virtual ~clsFile();

    // Open and AttachStream close the object first. Both return 0, or -1 on failure. Open makes up to three attempts.
    // GetErrorKind and GetErrorText describe a failed attempt, and the last error is the system's.
    int Open(const String& name, FileAccess access, FileDisposition disposition, FileShare share, std::uint32_t flags);
    // Adds a reference to the stream and moves it to its beginning.
    int AttachStream(IStream* stream);
    void Close();

    bool IsOpen() const;
    FileError GetErrorKind() const { return _errorKind; }
    const String& GetErrorText() const { return _errorText; }
    const String& GetName() const { return _name; } // empty for a stream or an adopted handle
    HANDLE GetHandle() const { return _handle.Get(); }
    IStream* GetStream() const { return _stream.Get(); }

    // Returns -1 if nothing is open, or on failure.
    std::int64_t GetSize();
    // Returns the new position. On failure the result is 0 for a file and -1 for a stream. Returns -1 if nothing is
    // open. For a stream, only the low 32 bits of the position are returned, sign-extended.
    std::int64_t Seek(std::int64_t position);
    // Returns the position, or -1 on failure and for a file position that exceeds 32 bits.
    std::int64_t Tell();
    // Returns the position without a 32-bit limit, or -1 if nothing is open or on failure.
    std::int64_t Position();

    // Detects the encoding of the text. The position must be 0; it is left after the byte order mark, or at 0.
    UTFType GetUTFType();

    // Returns the number of bytes read, 0 on failure.
    std::uint32_t Read(void* buffer, std::uint32_t count);
    // Returns the number of bytes written. Bytes of a failed system call aren't counted. Returns -1 if nothing is open.
    std::int64_t Write(const void* buffer, std::uint64_t count, std::int64_t position = kCurrentPosition);
    std::int64_t WriteBytes(const char* text, std::size_t length = kToTerminator);
    // The same, counted in 16-bit characters.
    std::int64_t WriteChars(const wchar_t* text, std::size_t length = kToTerminator);

    // Sets the end of the file `count` bytes after the current position, which doesn't change.
    void Reserve(std::int64_t count);
    // Truncates or extends the file to the current position.
    void SetEOF();

    // Locks a byte range exclusively for this object, waiting up to 10 seconds. Returns nothing if the range remains
    // locked elsewhere or nothing is open. A stream that doesn't support locks counts as locked.
    std::optional<scFileLock> Lock(std::uint64_t offset, std::uint64_t length);
    // Releases one lock of this range. A range that this object hasn't locked is reported to the debug output. An empty
    // `lock` is ignored.
    void Unlock(const std::optional<scFileLock>& lock);

    // Copies the source from its current position to its end to this object's position and truncates this object there.
    // A source that isn't open counts as empty. Returns false on failure; part of the data may have been written.
    bool CopyFrom(clsFile& source);

    // The functions of IStream. If the object holds a stream, they call it. Writing to a file requires a clsFileRW.
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;
    HRESULT STDMETHODCALLTYPE Read(void* buffer, ULONG count, ULONG* read) override;
    HRESULT STDMETHODCALLTYPE Write(const void* buffer, ULONG count, ULONG* written) override;
    HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER distance, DWORD origin, ULARGE_INTEGER* position) override;
    HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER size) override;
    HRESULT STDMETHODCALLTYPE CopyTo(
        IStream* target, ULARGE_INTEGER count, ULARGE_INTEGER* read, ULARGE_INTEGER* written) override;
    HRESULT STDMETHODCALLTYPE Commit(DWORD flags) override;
    HRESULT STDMETHODCALLTYPE Revert() override;
    HRESULT STDMETHODCALLTYPE LockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER count, DWORD type) override;
    HRESULT STDMETHODCALLTYPE UnlockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER count, DWORD type) override;
    HRESULT STDMETHODCALLTYPE Stat(STATSTG* record, DWORD flag) override;
    HRESULT STDMETHODCALLTYPE Clone(IStream** stream) override;

private:
    const wchar_t* LogName() const;
    bool MayWrite();
    DWORD TryToOpen(DWORD access, DWORD share, DWORD disposition, DWORD flags);

    std::int64_t HandlePosition() const;
    bool MoveHandle(std::int64_t distance, DWORD origin);
    bool MoveTo(std::int64_t position);
    bool WriteToHandle(const std::uint8_t* bytes, std::uint32_t count);
    bool WriteToStream(const std::uint8_t* bytes, std::uint32_t count);
    void LogWriteFailure(std::uint32_t written, std::uint32_t wanted, DWORD error);

    UTFType GuessUTFType(std::uint32_t count);

    bool TryLock(std::uint64_t offset, std::uint64_t length);
    void ReleaseRange(const scFileLock& lock);

    bool CopyBytes(clsFile& source, void* buffer, std::int64_t bufferSize, std::int64_t count);

    String _name;
    std::uint32_t _flags = 0;
    clsGenericHandleObjectAutoRelease _handle;

protected:
    // Never set by this class. A derived class may set it; Close and Commit handle it.
    clsAutoRelease<IStorage*> _storage;

private:
    clsAutoRelease<IStream*> _stream;
    FileError _errorKind = FileError::None;
    String _errorText;
    bool _ownsHandle = false; // false: Close doesn't close the handle
    WCValDList<scFileLock> _locks;
};

// A read-only file: consumers of its stream can't write to it.
class clsFileRO : public clsFile
{
public:
    using clsFile::clsFile;
};

class clsFileRW : public clsFile
{
public:
    using clsFile::clsFile;
};

// Takes ownership of the caller's reference to the stream.
class clsFileRWTempStream : public clsFileRW
{
public:
    explicit clsFileRWTempStream(IStream* stream);
};

} // namespace qx
