// The one object for a place where bytes live: a file by name, a handle taken over, or a caller's stream. It is a
// stream itself, so that it can be handed to any COM consumer.
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

// What others may do with the file meanwhile.
enum class FileShare
{
    None = 0,
    Exclusive = 1, // as None
    Read = 2,
    ReadWrite = 3
};

// Bits of the flag word.
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

    kFileData = kFileAttributeNormal | kFileSequentialScan // what all data files are opened with
};

// Why an open failed.
enum class FileError
{
    None = 0,
    PathNotFound = 1,
    InUse = 2,
    AlreadyExists = 3,
    AccessDenied = 4,
    Other = 5,
    NameRefused = 6 // nothing was tried
};

// A byte range that is locked until Unlock.
struct scFileLock
{
    std::uint64_t offset = 0;
    std::uint64_t length = 0;

    friend bool operator==(const scFileLock&, const scFileLock&) = default;
};

// Not synchronised: one thread at a time. Only the reference count is atomic. Nothing here throws.
//
// A file or a stream may be open; where there were both, the file goes first.
//
// Slot order of the virtual operations: the three of INonDelegatingUnknown, CreateHandle, then the rest.
class clsFile : public clsIUnknownImpl, public IStream
{
public:
    static constexpr std::int64_t kCurrentPosition = -1;
    static constexpr std::size_t kToTerminator = ~std::size_t{0};

    clsFile() = default;
    // IsOpen() tells how these ended.
    clsFile(const String& name, FileAccess access, FileDisposition disposition, FileShare share, std::uint32_t flags);
    explicit clsFile(IStream* stream);
    // Takes the handle over, to close it.
    explicit clsFile(HANDLE handle);

    HRESULT STDMETHODCALLTYPE NonDelegatingQueryInterface(REFIID iid, void** object) override;
    ULONG STDMETHODCALLTYPE NonDelegatingRelease() override;

protected:
    // Opens the file by name for Open, all arguments being the system's. Null or -1, and the last error, on failure.
    virtual HANDLE CreateHandle(const String& name, DWORD access, DWORD share, DWORD disposition, DWORD flags);

public:
    virtual ~clsFile();

    // Both give 0, or -1 on failure. What was open is closed first.
    // An open is tried three times. Its error kind and text stay for GetErrorKind and GetErrorText; the last error is
    // the system's.
    int Open(const String& name, FileAccess access, FileDisposition disposition, FileShare share, std::uint32_t flags);
    // Holds the stream with a reference of its own, and begins at its start.
    int AttachStream(IStream* stream);
    void Close();

    bool IsOpen() const;
    FileError GetErrorKind() const { return _errorKind; }
    const String& GetErrorText() const { return _errorText; }
    const String& GetName() const { return _name; } // empty for a stream or a handle taken over
    HANDLE GetHandle() const { return _handle.Get(); }
    IStream* GetStream() const { return _stream.Get(); }

    // -1 when closed or on failure.
    std::int64_t GetSize();
    // The new position; on failure 0 for a file and -1 for a stream; -1 when closed. Of a stream's new position the low
    // 32 bits come back, with sign.
    std::int64_t Seek(std::int64_t position);
    // The position, for a file as far as it has 32 bits; else -1.
    std::int64_t Tell();
    // The position with all its 64 bits, which Tell can't tell; -1 when closed or on failure.
    std::int64_t Position();

    // Looks for the text's encoding, and leaves the position behind the byte order mark or at 0. Begin at 0.
    UTFType GetUTFType();

    // The bytes read, 0 on failure.
    std::uint32_t Read(void* buffer, std::uint32_t count);
    // The bytes written; what a failed system call wrote doesn't count. -1 when closed.
    std::int64_t Write(const void* buffer, std::uint64_t count, std::int64_t position = kCurrentPosition);
    std::int64_t WriteBytes(const char* text, std::size_t length = kToTerminator);
    // The same in characters of 16 bits.
    std::int64_t WriteChars(const wchar_t* text, std::size_t length = kToTerminator);

    // Makes the file end `count` bytes behind the position, which stays.
    void Reserve(std::int64_t count);
    // Makes the file end at the position.
    void SetEOF();

    // Takes a range of bytes for this object alone, waiting up to 10 seconds; nothing if someone else has it or nothing
    // is open. A stream without locks counts as locked.
    std::optional<scFileLock> Lock(std::uint64_t offset, std::uint64_t length);
    // Gives one lock of this range back; one that this object hasn't is reported. Nothing does nothing.
    void Unlock(const std::optional<scFileLock>& lock);

    // Copies what the source holds from its position on to this object's position, and ends this object there. A source
    // that isn't open counts as empty. On failure part of it may be written.
    bool CopyFrom(clsFile& source);

    // IStream. A held stream does the work itself; only a clsFileRW writes to a file.
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
    // Nothing in the library puts a storage here; a derived class may, and Close and Commit know it.
    clsAutoRelease<IStorage*> _storage;

private:
    clsAutoRelease<IStream*> _stream;
    FileError _errorKind = FileError::None;
    String _errorText;
    bool _ownsHandle = false; // opened or taken over by this object; else Close only forgets it
    WCValDList<scFileLock> _locks;
};

// Read-only by its type: no consumer of its stream can write to the file.
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

// On a stream whose reference the caller gives away.
class clsFileRWTempStream : public clsFileRW
{
public:
    explicit clsFileRWTempStream(IStream* stream);
};

} // namespace qx
