// Waiting for objects and handles.
#pragma once

#include "threads/waitable.h"

#include <winbase.h>

#include <cstddef>

namespace qxplatform
{

struct WaitOptions
{
    bool forAll = false;
    DWORD milliseconds = INFINITE;
    bool isAlertable = false;
};

// The objects of one wait, in an array of fixed size, so that a wait allocates nothing.
class WaitObjects
{
public:
    static constexpr std::size_t kCapacity = MAXIMUM_WAIT_OBJECTS + 1; // and the thread's message queue

    WaitObjects() = default;
    explicit WaitObjects(Waitable& object) { Add(object); }
    WaitObjects(const WaitObjects&) = delete;
    WaitObjects& operator=(const WaitObjects&) = delete;
    ~WaitObjects()
    {
        for (Waitable* const object : *this)
            object->Release();
    }

    void Add(Waitable& object)
    {
        object.AddRef();
        _objects[_count++] = &object;
    }
    void RemoveLast() { _objects[--_count]->Release(); }
    std::size_t Count() const { return _count; }
    Waitable* const* begin() const { return _objects; }
    Waitable* const* end() const { return _objects + _count; }

private:
    Waitable* _objects[kCapacity];
    std::size_t _count = 0;
};

// Adds the objects of at most MAXIMUM_WAIT_OBJECTS handles. Returns false and sets the last error if one of the handles
// can't be waited for.
bool AddWaitables(WaitObjects& objects, DWORD count, const HANDLE* handles);

// Returns WAIT_OBJECT_0 plus the index of the object, WAIT_TIMEOUT, or WAIT_IO_COMPLETION if calls are queued to the
// thread. The result must be passed to FinishWait().
DWORD WaitFor(const WaitObjects& objects, const WaitOptions& options);

// Lets the thread continue: blocks while it is suspended, ends it if it has been terminated, and runs queued calls.
// Call it when no cleanup is pending.
DWORD FinishWait(DWORD result);

} // namespace qxplatform
