#include <handleapi.h>
#include <processthreadsapi.h>
#include <winnt.h>

#include "base/handle_table.h"
#include "base/pseudo_handles.h"

using namespace qxplatform;

BOOL WINAPI CloseHandle(HANDLE hObject)
{
    if (IsPseudoHandle(hObject))
        return TRUE;
    return CloseEntry(hObject, [](const Object& object) { return object.IsKernelObject(); });
}

BOOL WINAPI DuplicateHandle(HANDLE hSourceProcessHandle, HANDLE hSourceHandle, HANDLE hTargetProcessHandle,
    LPHANDLE lpTargetHandle, DWORD dwDesiredAccess, BOOL, DWORD dwOptions)
try
{
    // Handles of other processes are in other tables.
    if (!IsCurrentProcess(hSourceProcessHandle) || !IsCurrentProcess(hTargetProcessHandle))
        return Fail(ObjectOf(hSourceProcessHandle) && ObjectOf(hTargetProcessHandle) ? ERROR_NOT_SUPPORTED
                                                                                     : ERROR_INVALID_HANDLE);
    DWORD access = kAllAccess;
    const Ref<Object> object =
        IsPseudoHandle(hSourceHandle) ? PseudoHandleObject(hSourceHandle) : ObjectOf(hSourceHandle, &access);
    if (!object || !object->IsKernelObject())
        return Fail(ERROR_INVALID_HANDLE);

    BOOL result = TRUE;
    const DWORD wanted = object->MapAccess(dwDesiredAccess);
    if ((dwOptions & DUPLICATE_SAME_ACCESS) == 0 && (wanted & ~access) != 0)
        result = Fail(ERROR_ACCESS_DENIED);
    else if (lpTargetHandle != nullptr)
    {
        *lpTargetHandle = AddHandle(object, dwOptions & DUPLICATE_SAME_ACCESS ? access : wanted);
        result = *lpTargetHandle != nullptr;
    }
    // As documented, the source is closed in any case.
    if (dwOptions & DUPLICATE_CLOSE_SOURCE)
        CloseHandle(hSourceHandle);
    return result;
}
catch (const std::bad_alloc&)
{
    return Fail(ERROR_NOT_ENOUGH_MEMORY);
}
