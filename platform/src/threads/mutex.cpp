#include <synchapi.h>
#include <winbase.h>

#include "base/handle_table.h"
#include "threads/thread_object.h"

#include <new>

using namespace qxplatform;

namespace
{

class MutexObject : public Waitable, private OwnedByThread
{
public:
    static constexpr ObjectType kObjectType = ObjectType::Mutex;

    MutexObject() : Waitable(kObjectType) {}

    bool IsSignalled() const override { return _depth == 0 || _owner == &ThreadObject::Current(); }
    bool IsAbandoned() const override { return _isAbandoned; }
    void Take() override
    {
        _isAbandoned = false;
        if (_depth++ != 0)
            return;
        ThreadObject& thread = ThreadObject::Current();
        _owner = &thread;
        EnterList(thread.FirstOwned());
    }

    // Not named Release, which would hide the function for references.
    BOOL ReleaseOwnership()
    {
        const ThreadObject& thread = ThreadObject::Current();
        const std::lock_guard guard(DispatcherLock());
        if (_depth == 0 || _owner != &thread)
            return Fail(ERROR_NOT_OWNER);
        if (--_depth == 0)
        {
            LeaveList();
            Free();
        }
        return TRUE;
    }

private:
    ~MutexObject() override
    {
        const std::lock_guard guard(DispatcherLock()); // the owner may be ending
        if (_depth != 0)
            LeaveList();
    }

    void Abandon() override
    {
        _isAbandoned = true;
        Free();
    }

    void Free()
    {
        _depth = 0;
        _owner = nullptr;
        WakeWaiters();
    }

    const ThreadObject* _owner = nullptr; // not a reference: the owner abandons the mutex when it ends
    DWORD _depth = 0;                     // how often the owner has taken it
    bool _isAbandoned = false;
};

} // namespace

// Named mutexes, which processes would share, are not supported.
HANDLE WINAPI CreateMutexW(LPSECURITY_ATTRIBUTES, BOOL bInitialOwner, LPCWSTR lpName)
try
{
    if (lpName != nullptr && *lpName != 0)
    {
        SetLastError(ERROR_NOT_SUPPORTED);
        return nullptr;
    }
    const Ref<MutexObject> mutex = MakeObject<MutexObject>();
    if (bInitialOwner != FALSE)
    {
        ThreadObject::Current();
        const std::lock_guard guard(DispatcherLock());
        mutex->Take();
    }
    SetLastError(ERROR_SUCCESS); // callers test for ERROR_ALREADY_EXISTS
    return AddHandle(mutex);
}
catch (const std::bad_alloc&)
{
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return nullptr;
}

BOOL WINAPI ReleaseMutex(HANDLE hMutex)
{
    const Pinned<MutexObject> mutex(hMutex);
    return mutex && mutex->ReleaseOwnership();
}
