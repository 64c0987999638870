// Holds a system handle.
#pragma once

#include <windows.h>

namespace qx
{

// Holds a handle and closes it, or only refers to a handle that is closed elsewhere. 0 and -1 both mean "no handle",
// because system calls return either.
//
// Vtable order: EmptyValue, CloseHandle, Duplicate, destructor. A class that overrides CloseHandle must call Release in
// its own destructor, because its override no longer exists when the base destructor runs.
class clsGenericHandleObjectAutoRelease
{
public:
    clsGenericHandleObjectAutoRelease() = default;
    clsGenericHandleObjectAutoRelease(HANDLE handle, bool close) : _handle(handle), _close(close) {}
    clsGenericHandleObjectAutoRelease(const clsGenericHandleObjectAutoRelease&) = delete;
    clsGenericHandleObjectAutoRelease& operator=(const clsGenericHandleObjectAutoRelease&) = delete;

    virtual HANDLE EmptyValue() const { return nullptr; }
    virtual void CloseHandle();
    // Replaces the handle with an inheritable duplicate of `handle` with the same rights. Returns false on failure, and
    // the holder is empty then.
    virtual bool Duplicate(HANDLE handle);
    virtual ~clsGenericHandleObjectAutoRelease() { Release(); }

    // Releases the current handle first.
    void Take(HANDLE handle, bool close);
    // Closes the handle if the holder owns it. The holder is empty afterwards.
    void Release();
    // Empties the holder without closing the handle, and returns the handle.
    HANDLE Detach();

    HANDLE Get() const { return _handle; }
    bool ClosesHandle() const { return _close; }
    bool IsValid() const { return IsValid(_handle); }
    static bool IsValid(HANDLE handle) { return handle != nullptr && handle != INVALID_HANDLE_VALUE; }

private:
    HANDLE _handle = nullptr;
    bool _close = false;
};

} // namespace qx
