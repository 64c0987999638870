#include "files/handle_holder.h"

#include <utility>

namespace qx
{

void clsGenericHandleObjectAutoRelease::CloseHandle()
{
    ::CloseHandle(_handle);
}

bool clsGenericHandleObjectAutoRelease::Duplicate(HANDLE handle)
{
    Release();
    HANDLE duplicate = nullptr;
    const HANDLE process = GetCurrentProcess();
    if (!DuplicateHandle(process, handle, process, &duplicate, 0, TRUE, DUPLICATE_SAME_ACCESS))
    {
        return false;
    }
    Take(duplicate, true);
    return true;
}

void clsGenericHandleObjectAutoRelease::Take(HANDLE handle, bool close)
{
    Release();
    _handle = handle;
    _close = close;
}

void clsGenericHandleObjectAutoRelease::Release()
{
    if (IsValid())
    {
        if (_close)
        {
            CloseHandle();
        }
        _handle = EmptyValue();
    }
    _close = false;
}

HANDLE clsGenericHandleObjectAutoRelease::Detach()
{
    _close = false;
    return std::exchange(_handle, EmptyValue());
}

} // namespace qx
