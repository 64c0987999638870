#include "docinfo/storage.h"

#include "docinfo/wait_for_data.h"
#include "files/temp_files.h"

#include <atomic>
#include <cstdint>
#include <cstring>

namespace qx
{
namespace
{

HRESULT OpenBySystem(const wchar_t* path, DWORD mode, IStorage** storage)
{
    return StgOpenStorage(path, nullptr, mode, nullptr, 0, storage);
}

std::atomic<StorageOpening> storageOpening = OpenBySystem;

// Returns true if another sharing mode may succeed.
bool IsLocked(HRESULT result)
{
    return result == STG_E_SHAREVIOLATION || result == STG_E_LOCKVIOLATION || result == STG_E_INVALIDFLAG;
}

HRESULT OpenInSomeMode(const String& path, clsAutoRelease<IStorage*>& storage)
{
    constexpr HRESULT kNoStorage = static_cast<HRESULT>(0x80040012);
    constexpr DWORD kModes[] = {
        STGM_SHARE_DENY_WRITE, STGM_SHARE_EXCLUSIVE, STGM_SHARE_DENY_NONE, STGM_DIRECT_SWMR | STGM_SHARE_DENY_NONE};

    HRESULT result = WaitForData([&] { return StgIsStorageFile(path.Text()); });
    if (result != S_OK)
        return result == S_FALSE ? kNoStorage : result;
    for (const DWORD mode : kModes)
    {
        result = WaitForData([&] { return storageOpening.load()(path.Text(), mode, storage.Receive()); });
        if (!IsLocked(result))
            break;
    }
    return result;
}

template <class Interface, class Call>
clsAutoRelease<Interface*> OpenElement(const Call& call)
{
    clsAutoRelease<Interface*> element;
    if (FAILED(WaitForData([&] { return call(element.Receive()); })))
        element.Release();
    return element;
}

} // namespace

bool HasStorageSignature(FileWindow& file)
{
    constexpr std::uint8_t kSignature[] = {0xD0, 0xCF, 0x11, 0xE0, 0xA1, 0xB1, 0x1A, 0xE1};
    const std::uint8_t* const head = file.At(0, sizeof kSignature);
    return head != nullptr && std::memcmp(head, kSignature, sizeof kSignature) == 0;
}

DocumentStorage::~DocumentStorage()
{
    _storage.Release();
    if (!_copy.IsEmpty() && !DeleteFileW(_copy.Text()))
        _record.Remark(
            L"DeleteFile(%s) returned error '%s'", _copy.Text(), String::SystemErrorText(GetLastError()).Text());
}

HRESULT DocumentStorage::Open(const String& path)
{
    const HRESULT result = OpenOrCopy(path);
    if (result != S_OK)
        _record.Remark(L"error opening storage: %s", String::SystemErrorText(static_cast<unsigned>(result)).Text());
    return result;
}

HRESULT DocumentStorage::OpenOrCopy(const String& path)
{
    const HRESULT result = OpenInSomeMode(path, _storage);
    return IsLocked(result) ? OpenCopy(path, result) : result;
}

// Opens a copy of a locked file. A program that locks a storage may still let others read the bytes of its file.
HRESULT DocumentStorage::OpenCopy(const String& path, HRESULT locked)
{
    {
        clsFileRO source(path, FileAccess::Read, FileDisposition::OpenExisting, FileShare::Read, kFileData);
        if (!source.IsOpen())
            return locked;
        _copy = MakeTempFile(kTempSubfolder, L"doc", L".tmp", nullptr);
        clsFileRW target(_copy, FileAccess::ReadWrite, FileDisposition::CreateAlways, FileShare::None, kFileData);
        target.CopyFrom(source);
    }
    return OpenInSomeMode(_copy, _storage);
}

clsAutoRelease<IStream*> OpenStream(IStorage& storage, const wchar_t* name)
{
    return OpenElement<IStream>(
        [&](IStream** stream) { return storage.OpenStream(name, nullptr, STGM_SHARE_EXCLUSIVE, 0, stream); });
}

clsAutoRelease<IStorage*> OpenSubStorage(IStorage& storage, const wchar_t* name)
{
    return OpenElement<IStorage>([&](IStorage** element)
        { return storage.OpenStorage(name, nullptr, STGM_SHARE_EXCLUSIVE, nullptr, 0, element); });
}

void SetStorageOpening(StorageOpening opening)
{
    storageOpening = opening != nullptr ? opening : OpenBySystem;
}

} // namespace qx
