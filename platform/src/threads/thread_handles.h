// Look-up of threads by handle.
#pragma once

#include "base/handle_table.h"
#include "threads/thread_object.h"

namespace qxplatform
{

// Returns the thread of a handle with these rights, or of the calling thread's pseudo handle. Empty with a last error
// on failure.
inline Ref<ThreadObject> ThreadOf(HANDLE handle, DWORD rights = 0)
{
    if (handle == GetCurrentThread())
        return Ref<ThreadObject>(&ThreadObject::Current());
    return LookUp<ThreadObject>(handle, rights);
}

} // namespace qxplatform
