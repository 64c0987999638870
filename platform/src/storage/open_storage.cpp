// Opens compound files by their names.
#include "storage/compound_file.h"
#include "storage/storage_errors.h"
#include "storage/storage_object.h"

#include <objbase.h>

#include <new>

using namespace qxplatform;

namespace
{

constexpr DWORD kShareMask = 0x70;

// Converts the sharing of a mode for CreateFileW. Returns false if the mode's sharing isn't valid.
bool ShareOfMode(DWORD mode, DWORD& share)
{
    switch (mode & kShareMask)
    {
    case 0: // the default
    case STGM_SHARE_DENY_NONE:
        share = FILE_SHARE_READ | FILE_SHARE_WRITE;
        return true;
    case STGM_SHARE_DENY_READ:
        share = FILE_SHARE_WRITE;
        return true;
    case STGM_SHARE_DENY_WRITE:
        share = FILE_SHARE_READ;
        return true;
    case STGM_SHARE_EXCLUSIVE:
        share = 0;
        return true;
    default:
        return false;
    }
}

} // namespace

HRESULT WINAPI StgIsStorageFile(const WCHAR* pwcsName)
{
    if (pwcsName == nullptr)
        return STG_E_INVALIDNAME;
    const HANDLE file = CreateFileW(pwcsName, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
        nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return StorageError(GetLastError());
    std::uint8_t bytes[kSignatureSize];
    DWORD read = 0;
    const HRESULT failure =
        ReadFile(file, bytes, sizeof bytes, &read, nullptr) ? S_FALSE : StorageError(GetLastError());
    CloseHandle(file);
    return read == sizeof bytes && IsCompoundSignature(bytes) ? S_OK : failure;
}

HRESULT WINAPI StgOpenStorage(
    const WCHAR* pwcsName, IStorage* pstgPriority, DWORD grfMode, SNB snbExclude, DWORD reserved, IStorage** ppstgOpen)
try
{
    constexpr DWORD kAccess = STGM_READ | STGM_WRITE | STGM_READWRITE;
    if (ppstgOpen == nullptr)
        return STG_E_INVALIDPOINTER;
    *ppstgOpen = nullptr;
    if (pwcsName == nullptr)
        return STG_E_INVALIDNAME;
    if (pstgPriority != nullptr || snbExclude != nullptr || reserved != 0)
        return STG_E_INVALIDFUNCTION;
    DWORD share = 0;
    if ((grfMode & ~(kAccess | kShareMask | STGM_DIRECT_SWMR)) != 0 || !ShareOfMode(grfMode, share))
        return STG_E_INVALIDFLAG;
    if ((grfMode & kAccess) != STGM_READ)
        return STG_E_ACCESSDENIED;

    HRESULT failure = S_OK;
    const std::shared_ptr<CompoundFile> compound = CompoundFile::Open(pwcsName, share, failure);
    if (compound == nullptr)
        return failure;
    *ppstgOpen = MakeStorageObject(compound, CompoundFile::kRoot);
    return S_OK;
}
catch (const std::bad_alloc&)
{
    return E_OUTOFMEMORY;
}
