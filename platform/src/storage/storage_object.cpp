#include "storage/storage_object.h"

#include "base/text.h"
#include "com/counted_object.h"
#include "storage/storage_stream.h"

#include <objbase.h>

#include <mutex>
#include <new>

namespace qxplatform
{

namespace
{

class StorageObject final : public CountedObject<IStorage>
{
public:
    StorageObject(std::shared_ptr<CompoundFile> file, std::uint32_t element) : _file(std::move(file)), _element(element)
    {
    }

    HRESULT OpenStream(const OLECHAR* name, void*, DWORD mode, DWORD, IStream** stream) override
    {
        return Open(name, mode, ElementType::Stream, stream,
            [this](std::uint32_t, const Element& element) { return MakeStorageStream(_file, element); });
    }

    HRESULT OpenStorage(
        const OLECHAR* name, IStorage* priority, DWORD mode, SNB exclude, DWORD, IStorage** storage) override
    {
        if (priority != nullptr || exclude != nullptr)
            return STG_E_INVALIDFUNCTION;
        return Open(name, mode, ElementType::Storage, storage,
            [this](std::uint32_t index, const Element&) { return MakeStorageObject(_file, index); });
    }

    HRESULT EnumElements(DWORD, void*, DWORD, IEnumSTATSTG**) override { return STG_E_UNIMPLEMENTEDFUNCTION; }
    HRESULT Stat(STATSTG*, DWORD) override { return STG_E_UNIMPLEMENTEDFUNCTION; }
    HRESULT CopyTo(DWORD, const IID*, SNB, IStorage*) override { return STG_E_UNIMPLEMENTEDFUNCTION; }

    HRESULT CreateStream(const OLECHAR*, DWORD, DWORD, DWORD, IStream**) override { return STG_E_ACCESSDENIED; }
    HRESULT CreateStorage(const OLECHAR*, DWORD, DWORD, DWORD, IStorage**) override { return STG_E_ACCESSDENIED; }
    HRESULT MoveElementTo(const OLECHAR*, IStorage*, const OLECHAR*, DWORD) override { return STG_E_ACCESSDENIED; }
    HRESULT Commit(DWORD) override { return S_OK; }
    HRESULT Revert() override { return S_OK; }
    HRESULT DestroyElement(const OLECHAR*) override { return STG_E_ACCESSDENIED; }
    HRESULT RenameElement(const OLECHAR*, const OLECHAR*) override { return STG_E_ACCESSDENIED; }
    HRESULT SetElementTimes(const OLECHAR*, const FILETIME*, const FILETIME*, const FILETIME*) override
    {
        return STG_E_ACCESSDENIED;
    }
    HRESULT SetClass(REFCLSID) override { return STG_E_ACCESSDENIED; }
    HRESULT SetStateBits(DWORD, DWORD) override { return STG_E_ACCESSDENIED; }

private:
    ~StorageObject() override = default;

    void* FindInterface(REFIID riid) override
    {
        return riid == IID_IUnknown || riid == IID_IStorage ? static_cast<IStorage*>(this) : nullptr;
    }

    // Opens an element. `make` returns the new object for the index and the contents of its directory entry.
    template <class Interface, class Make>
    HRESULT Open(const OLECHAR* name, DWORD mode, ElementType type, Interface** object, const Make& make)
    try
    {
        constexpr DWORD kAccess = STGM_READ | STGM_WRITE | STGM_READWRITE;
        if (object == nullptr)
            return STG_E_INVALIDPOINTER;
        *object = nullptr;
        if (name == nullptr)
            return STG_E_INVALIDNAME;
        // Elements are always opened exclusively, and their modes have no other flags.
        if ((mode & ~kAccess) != STGM_SHARE_EXCLUSIVE)
            return STG_E_INVALIDFUNCTION;
        if ((mode & kAccess) != STGM_READ)
            return STG_E_ACCESSDENIED;
        const std::lock_guard lock(_file->Lock());
        const std::optional<std::uint32_t> index = _file->Find(_element, View(name), type);
        const std::optional<Element> element = index ? _file->ElementAt(*index) : std::nullopt;
        if (!element)
            return _file->TakeFailure(STG_E_FILENOTFOUND);
        *object = make(*index, *element);
        return S_OK;
    }
    catch (const std::bad_alloc&)
    {
        return E_OUTOFMEMORY;
    }

    const std::shared_ptr<CompoundFile> _file;
    const std::uint32_t _element;
};

} // namespace

IStorage* MakeStorageObject(const std::shared_ptr<CompoundFile>& file, std::uint32_t element)
{
    return new StorageObject(file, element);
}

} // namespace qxplatform
