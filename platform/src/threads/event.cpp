#include <synchapi.h>
#include <winbase.h>

#include "base/handle_table.h"
#include "threads/waitable.h"

#include <atomic>

using namespace qxplatform;

namespace
{

class EventObject : public Waitable
{
public:
    static constexpr ObjectType kObjectType = ObjectType::Event;

    EventObject(bool isManual, bool isSet) : Waitable(kObjectType), _isManual(isManual), _isSet(isSet) {}

    bool IsSignalled() const override { return _isSet; }
    void Take() override
    {
        if (!_isManual)
            _isSet = false;
    }

    // Takes the lock only to wake threads. Waiters are counted before they check the event, so none is missed.
    void Set()
    {
        if (_isSet.exchange(true) || !HasWaiters())
            return;
        const std::lock_guard guard(DispatcherLock());
        WakeWaiters();
    }
    void Reset()
    {
        const std::lock_guard guard(DispatcherLock());
        _isSet = false;
    }

private:
    const bool _isManual;
    std::atomic<bool> _isSet;
};

} // namespace

// Named events, which processes would share, are not supported.
HANDLE WINAPI CreateEventW(LPSECURITY_ATTRIBUTES, BOOL bManualReset, BOOL bInitialState, LPCWSTR lpName)
{
    if (lpName != nullptr && *lpName != 0)
    {
        SetLastError(ERROR_NOT_SUPPORTED);
        return nullptr;
    }
    SetLastError(ERROR_SUCCESS); // callers test for ERROR_ALREADY_EXISTS
    return AddHandle(MakeObject<EventObject>(bManualReset != FALSE, bInitialState != FALSE));
}

BOOL WINAPI SetEvent(HANDLE hEvent)
{
    const Pinned<EventObject> event(hEvent, EVENT_MODIFY_STATE);
    if (!event)
        return FALSE;
    event->Set();
    return TRUE;
}

BOOL WINAPI ResetEvent(HANDLE hEvent)
{
    const Pinned<EventObject> event(hEvent, EVENT_MODIFY_STATE);
    if (!event)
        return FALSE;
    event->Reset();
    return TRUE;
}
