// Streams on a global memory block.
#include "base/mutex.h"
#include "com/counted_object.h"

#include <windows.h>

#include <combaseapi.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <mutex>
#include <new>

namespace qxplatform
{

namespace
{

// Identifies the layer's own streams among those passed by callers.
constexpr IID kGlobalStreamId = {0x0B8E6E3D, 0x7A51, 0x4C0C, {0x9D, 0x5B, 0x5E, 0x1F, 0x63, 0xC8, 0x20, 0x77}};

// The contents of bytes added by growth.
enum class Fill
{
    None,
    Zero
};

// A global memory block and the size of the streams on it. The block itself is kept at the same size, so callers who
// take over the memory get the size from GlobalSize.
class SharedBlock
{
public:
    SharedBlock(HGLOBAL memory, bool freeIt) : _memory(memory), _size(GlobalSize(memory)), _freeIt(freeIt) {}
    ~SharedBlock()
    {
        if (_freeIt)
            GlobalFree(_memory);
    }
    SharedBlock(const SharedBlock&) = delete;
    SharedBlock& operator=(const SharedBlock&) = delete;

    // Held by a stream during each operation, because streams on one block may be used by several threads.
    Mutex& Lock() { return _mutex; }

    HGLOBAL Memory() const { return _memory; }
    std::uint64_t Size() const { return _size; }

    // Uses the present size of the memory, because the caller also has access to the block and may have made it
    // smaller.
    std::size_t Read(std::uint64_t position, void* buffer, std::size_t count) const
    {
        const std::uint64_t size = SizeInMemory();
        if (position >= size || count == 0)
            return 0;
        const std::size_t available = static_cast<std::size_t>(size - position);
        const std::size_t copied = count < available ? count : available;
        const auto data = static_cast<const char*>(GlobalLock(_memory));
        if (data == nullptr)
            return 0;
        std::memcpy(buffer, data + position, copied);
        GlobalUnlock(_memory);
        return copied;
    }

    bool Write(std::uint64_t position, const void* buffer, std::size_t count)
    {
        if (count > std::numeric_limits<std::uint64_t>::max() - position)
            return false;
        const std::uint64_t end = position + count;
        const std::uint64_t size = SizeInMemory();
        const Fill fill =
            position > size ? Fill::Zero : Fill::None; // zero a gap; otherwise the buffer provides all new bytes
        if (end > size && !Resize(end > _size ? end : _size, fill))
            return false;
        const auto data = static_cast<char*>(GlobalLock(_memory));
        if (data == nullptr)
            return false;
        std::memcpy(data + position, buffer, count);
        GlobalUnlock(_memory);
        return true;
    }

    bool Resize(std::uint64_t size, Fill fill)
    {
        // With size 0, omit GMEM_MOVEABLE, which would discard the block.
        const UINT flags = (size != 0 ? GMEM_MOVEABLE : 0u) | (fill == Fill::Zero ? GMEM_ZEROINIT : 0u);
        const HGLOBAL memory = GlobalReAlloc(_memory, size, flags);
        if (memory == nullptr)
            return false;
        _memory = memory;
        _size = size;
        return true;
    }

private:
    std::uint64_t SizeInMemory() const
    {
        const std::uint64_t inMemory = GlobalSize(_memory);
        return inMemory < _size ? inMemory : _size;
    }

    Mutex _mutex;
    HGLOBAL _memory;
    std::uint64_t _size;
    bool _freeIt;
};

class GlobalStream final : public CountedObject<IStream>
{
public:
    GlobalStream(std::shared_ptr<SharedBlock> block, std::uint64_t position)
        : _block(std::move(block)),
          _position(position)
    {
    }

    SharedBlock& Block() { return *_block; }

    HRESULT Read(void* buffer, ULONG count, ULONG* read) override
    {
        if (read != nullptr)
            *read = 0;
        if (buffer == nullptr)
            return STG_E_INVALIDPOINTER;
        std::lock_guard lock(_block->Lock());
        const std::size_t done = _block->Read(_position, buffer, count);
        _position += done;
        if (read != nullptr)
            *read = static_cast<ULONG>(done);
        return S_OK; // also if fewer or no bytes are left
    }

    HRESULT Write(const void* buffer, ULONG count, ULONG* written) override
    {
        if (written != nullptr)
            *written = 0;
        if (buffer == nullptr)
            return STG_E_INVALIDPOINTER;
        if (count == 0)
            return S_OK;
        std::lock_guard lock(_block->Lock());
        if (!_block->Write(_position, buffer, count))
            return STG_E_MEDIUMFULL;
        _position += count;
        if (written != nullptr)
            *written = count;
        return S_OK;
    }

    HRESULT Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* position) override
    {
        std::lock_guard lock(_block->Lock());
        HRESULT result = S_OK;
        std::uint64_t target = 0;
        if (origin > STREAM_SEEK_END)
            result = STG_E_SEEKERROR;
        else
        {
            const std::uint64_t start = origin == STREAM_SEEK_SET   ? 0
                                        : origin == STREAM_SEEK_CUR ? _position
                                                                    : _block->Size();
            // Reject positions before the start, and positions that callers couldn't reach with a signed number.
            if (__builtin_add_overflow(start, move.QuadPart, &target) || target > INT64_MAX)
                result = STG_E_SEEKERROR;
            else
                _position = target;
        }
        if (position != nullptr)
            position->QuadPart = _position;
        return result;
    }

    HRESULT SetSize(ULARGE_INTEGER size) override
    {
        std::lock_guard lock(_block->Lock());
        return _block->Resize(size.QuadPart, Fill::Zero) ? S_OK : STG_E_MEDIUMFULL;
    }

    HRESULT CopyTo(IStream* target, ULARGE_INTEGER count, ULARGE_INTEGER* read, ULARGE_INTEGER* written) override
    {
        std::uint64_t totalRead = 0, totalWritten = 0;
        const HRESULT result =
            target != nullptr ? Copy(*target, count.QuadPart, totalRead, totalWritten) : STG_E_INVALIDPOINTER;
        if (read != nullptr)
            read->QuadPart = totalRead;
        if (written != nullptr)
            written->QuadPart = totalWritten;
        return result;
    }

    // Changes take effect immediately, so there is nothing to commit or revert.
    HRESULT Commit(DWORD) override { return S_OK; }
    HRESULT Revert() override { return S_OK; }

    HRESULT LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override { return STG_E_INVALIDFUNCTION; }
    HRESULT UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override { return STG_E_INVALIDFUNCTION; }

    HRESULT Stat(STATSTG* status, DWORD) override
    {
        if (status == nullptr)
            return STG_E_INVALIDPOINTER;
        std::lock_guard lock(_block->Lock());
        *status = {}; // no name
        status->type = STGTY_STREAM;
        status->cbSize.QuadPart = _block->Size();
        return S_OK;
    }

    HRESULT Clone(IStream** clone) override
    {
        if (clone == nullptr)
            return STG_E_INVALIDPOINTER;
        std::lock_guard lock(_block->Lock());
        *clone = new (std::nothrow) GlobalStream(_block, _position);
        return *clone != nullptr ? S_OK : E_OUTOFMEMORY;
    }

private:
    ~GlobalStream() override = default;

    void* FindInterface(REFIID riid) override
    {
        if (riid == IID_IUnknown || riid == IID_ISequentialStream || riid == IID_IStream)
            return static_cast<IStream*>(this);
        return riid == kGlobalStreamId ? this : nullptr;
    }

    HRESULT Copy(IStream& target, std::uint64_t count, std::uint64_t& totalRead, std::uint64_t& totalWritten)
    {
        constexpr ULONG kChunk = 0x10000;
        const std::unique_ptr<char[]> chunk(new (std::nothrow) char[kChunk]);
        if (chunk == nullptr)
            return E_OUTOFMEMORY;
        // If the target uses the same block, the bytes it appends must not be copied as well.
        std::uint64_t remaining = RemainingBytes();
        remaining = count < remaining ? count : remaining;
        while (remaining != 0)
        {
            ULONG read = 0;
            Read(chunk.get(), remaining < kChunk ? static_cast<ULONG>(remaining) : kChunk, &read);
            if (read == 0)
                break;
            totalRead += read;
            remaining -= read;
            // Called without the lock, because the target may use the same block.
            ULONG written = 0;
            const HRESULT result = target.Write(chunk.get(), read, &written);
            totalWritten += written;
            if (FAILED(result))
                return result;
            if (written != read)
                return STG_E_MEDIUMFULL;
        }
        return S_OK;
    }

    std::uint64_t RemainingBytes()
    {
        std::lock_guard lock(_block->Lock());
        return _block->Size() > _position ? _block->Size() - _position : 0;
    }

    std::shared_ptr<SharedBlock> _block;
    std::uint64_t _position;
};

HRESULT CreateStream(HGLOBAL memory, bool freeIt, IStream** stream)
try
{
    *stream = new GlobalStream(std::make_shared<SharedBlock>(memory, freeIt), 0);
    return S_OK;
}
catch (const std::bad_alloc&)
{
    return E_OUTOFMEMORY;
}

} // namespace

} // namespace qxplatform

HRESULT WINAPI CreateStreamOnHGlobal(HGLOBAL memory, BOOL deleteOnRelease, LPSTREAM* stream)
{
    if (stream == nullptr)
        return E_INVALIDARG;
    *stream = nullptr;
    if (memory != nullptr)
    {
        if (GlobalFlags(memory) == GMEM_INVALID_HANDLE)
            return E_INVALIDARG;
        return qxplatform::CreateStream(memory, deleteOnRelease != FALSE, stream);
    }
    const HGLOBAL fresh = GlobalAlloc(GMEM_MOVEABLE, 0);
    if (fresh == nullptr)
        return E_OUTOFMEMORY;
    const HRESULT result = qxplatform::CreateStream(fresh, deleteOnRelease != FALSE, stream);
    if (FAILED(result))
        GlobalFree(fresh);
    return result;
}

HRESULT WINAPI GetHGlobalFromStream(LPSTREAM stream, HGLOBAL* memory)
{
    if (stream == nullptr || memory == nullptr)
        return E_INVALIDARG;
    void* object = nullptr;
    if (FAILED(stream->QueryInterface(qxplatform::kGlobalStreamId, &object)) || object == nullptr)
        return E_INVALIDARG;
    const auto own = static_cast<qxplatform::GlobalStream*>(object);
    {
        std::lock_guard lock(own->Block().Lock());
        *memory = own->Block().Memory();
    }
    own->Release();
    return S_OK;
}
