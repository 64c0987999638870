// The one table behind all handles of the process. A handle names an entry by index and generation, so that a value
// whose entry was closed, or which never was a handle, is told from a living one. Looking up takes no lock.
#pragma once

#include "base/fail.h"
#include "base/object.h"

namespace qxplatform
{

// The rights of an entry that was opened without any to choose from.
inline constexpr DWORD allAccess = 0xFFFFFFFF;

// A new entry for the object, or null with ERROR_NO_SYSTEM_RESOURCES.
HANDLE AddHandle(const Ref<Object>& object, DWORD access = allAccess);

// The object of a handle and, if asked, the rights of its entry. An empty result leaves the last error alone.
Ref<Object> ObjectOf(HANDLE handle, DWORD* access = nullptr);

// Closes the entry if its object is of a type that `mayClose` admits. False with ERROR_INVALID_HANDLE otherwise.
BOOL CloseEntry(HANDLE handle, bool (*mayClose)(const Object&));

// The object of a handle of type T, which names its type as `T::objectType`: else empty with ERROR_INVALID_HANDLE, or
// with ERROR_ACCESS_DENIED if the entry lacks one of the rights.
template <class T>
Ref<T> LookUp(HANDLE handle, DWORD rights = 0)
{
    DWORD access = 0;
    Ref<Object> object = ObjectOf(handle, &access);
    if (!object || object->type != T::objectType)
    {
        SetLastError(ERROR_INVALID_HANDLE);
        return {};
    }
    if ((access & rights) != rights)
    {
        SetLastError(ERROR_ACCESS_DENIED);
        return {};
    }
    return StaticCast<T>(std::move(object));
}

// Calls the function with every living object. Meant for the end of the process.
void ForEachObject(void (*function)(Object&));

} // namespace qxplatform
