// Threads by handle.
#pragma once

#include "base/handle_table.h"
#include "threads/thread_object.h"

namespace qxplatform
{

// Of a handle with these rights, or of the pseudo handle of the calling thread. Empty with the last error.
inline Ref<ThreadObject> ThreadOf(HANDLE handle, DWORD rights = 0)
{
    if (handle == GetCurrentThread())
        return Ref<ThreadObject>(&ThreadObject::Current());
    return LookUp<ThreadObject>(handle, rights);
}

} // namespace qxplatform
