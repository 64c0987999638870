#include "storage/storage_stream.h"

#include "com/counted_object.h"

#include <objbase.h>

#include <cstring>
#include <mutex>
#include <new>

namespace qxplatform
{

namespace
{

class StorageStream final : public CountedObject<IStream>
{
public:
    StorageStream(std::shared_ptr<CompoundFile> file, const Element& element, std::uint64_t position)
        : _file(std::move(file)),
          _element(element),
          _size(_file->SizeOf(element)),
          _position(position),
          _chain(element.start)
    {
    }

    // Reads up to the first damaged part. Fails only if it can't read a single byte.
    HRESULT Read(void* buffer, ULONG count, ULONG* read) override
    try
    {
        if (read != nullptr)
            *read = 0;
        if (buffer == nullptr)
            return STG_E_INVALIDPOINTER;
        const std::lock_guard lock(_file->Lock());
        const std::uint64_t left = _position < _size ? _size - _position : 0;
        const auto wanted = static_cast<ULONG>(count < left ? count : left);
        if (wanted == 0)
            return S_OK;
        const bool isMini = _element.size < CompoundFile::kMiniCutoff;
        const std::size_t done = _file->Read(_chain, isMini, _position, static_cast<std::uint8_t*>(buffer), wanted);
        if (done == 0)
            return _file->TakeFailure(STG_E_DOCFILECORRUPT);
        _position += done;
        if (read != nullptr)
            *read = static_cast<ULONG>(done);
        return S_OK;
    }
    catch (const std::bad_alloc&)
    {
        return E_OUTOFMEMORY;
    }

    HRESULT Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* position) override
    {
        const std::lock_guard lock(_file->Lock());
        const std::uint64_t start = origin == STREAM_SEEK_SET ? 0 : origin == STREAM_SEEK_CUR ? _position : _size;
        std::uint64_t target = 0;
        const bool isValid =
            origin <= STREAM_SEEK_END && !__builtin_add_overflow(start, move.QuadPart, &target) && target <= INT64_MAX;
        if (isValid)
            _position = target;
        if (position != nullptr)
            position->QuadPart = _position;
        return isValid ? S_OK : STG_E_SEEKERROR;
    }

    HRESULT Stat(STATSTG* status, DWORD flags) override
    {
        if (status == nullptr)
            return STG_E_INVALIDPOINTER;
        *status = {};
        status->type = STGTY_STREAM;
        status->cbSize.QuadPart = _size;
        status->grfMode = STGM_SHARE_EXCLUSIVE;
        if (flags == STATFLAG_NONAME)
            return S_OK;
        const std::size_t bytes = _element.nameLength * sizeof(OLECHAR);
        status->pwcsName = static_cast<LPOLESTR>(CoTaskMemAlloc(bytes + sizeof(OLECHAR)));
        if (status->pwcsName == nullptr)
            return E_OUTOFMEMORY;
        std::memcpy(status->pwcsName, _element.name, bytes);
        status->pwcsName[_element.nameLength] = 0;
        return S_OK;
    }

    HRESULT Clone(IStream** clone) override
    {
        if (clone == nullptr)
            return STG_E_INVALIDPOINTER;
        const std::lock_guard lock(_file->Lock());
        *clone = new (std::nothrow) StorageStream(_file, _element, _position);
        return *clone != nullptr ? S_OK : E_OUTOFMEMORY;
    }

    HRESULT CopyTo(IStream*, ULARGE_INTEGER, ULARGE_INTEGER*, ULARGE_INTEGER*) override
    {
        return STG_E_UNIMPLEMENTEDFUNCTION;
    }

    HRESULT Write(const void*, ULONG, ULONG* written) override
    {
        if (written != nullptr)
            *written = 0;
        return STG_E_ACCESSDENIED;
    }
    HRESULT SetSize(ULARGE_INTEGER) override { return STG_E_ACCESSDENIED; }
    HRESULT Commit(DWORD) override { return S_OK; }
    HRESULT Revert() override { return S_OK; }
    HRESULT LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override { return STG_E_INVALIDFUNCTION; }
    HRESULT UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override { return STG_E_INVALIDFUNCTION; }

private:
    ~StorageStream() override = default;

    void* FindInterface(REFIID riid) override
    {
        const bool isKnown = riid == IID_IUnknown || riid == IID_ISequentialStream || riid == IID_IStream;
        return isKnown ? static_cast<IStream*>(this) : nullptr;
    }

    const std::shared_ptr<CompoundFile> _file;
    const Element _element;
    const std::uint64_t _size;
    std::uint64_t _position; // this and the chain are guarded by the file's lock
    SectorChain _chain;
};

} // namespace

IStream* MakeStorageStream(const std::shared_ptr<CompoundFile>& file, const Element& element)
{
    return new StorageStream(file, element, 0);
}

} // namespace qxplatform
