#include "storage/storage_errors.h"

namespace qxplatform
{

HRESULT StorageError(DWORD error)
{
    switch (error)
    {
    case ERROR_FILE_NOT_FOUND:
        return STG_E_FILENOTFOUND;
    case ERROR_PATH_NOT_FOUND:
        return STG_E_PATHNOTFOUND;
    case ERROR_TOO_MANY_OPEN_FILES:
        return STG_E_TOOMANYOPENFILES;
    case ERROR_ACCESS_DENIED:
        return STG_E_ACCESSDENIED;
    case ERROR_SHARING_VIOLATION:
        return STG_E_SHAREVIOLATION;
    case ERROR_LOCK_VIOLATION:
        return STG_E_LOCKVIOLATION;
    case ERROR_INVALID_NAME:
        return STG_E_INVALIDNAME;
    case ERROR_NOT_ENOUGH_MEMORY:
        return E_OUTOFMEMORY;
    default:
        return STG_E_READFAULT;
    }
}

} // namespace qxplatform
