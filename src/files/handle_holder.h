// Holder of a system handle.
#pragma once

#include <windows.h>

namespace qx
{

// Owns a handle, or only knows one that someone else closes. 0 and -1 both mean that there is none: system calls use
// the one or the other.
//
// Slot order of the virtual operations: EmptyValue, CloseHandle, Duplicate, destructor. A class that overrides
// CloseHandle releases in its own destructor: here its override is gone already.
class clsGenericHandleObjectAutoRelease
{
public:
    clsGenericHandleObjectAutoRelease() = default;
    clsGenericHandleObjectAutoRelease(HANDLE handle, bool close) : _handle(handle), _close(close) {}
    clsGenericHandleObjectAutoRelease(const clsGenericHandleObjectAutoRelease&) = delete;
    clsGenericHandleObjectAutoRelease& operator=(const clsGenericHandleObjectAutoRelease&) = delete;

    virtual HANDLE EmptyValue() const { return nullptr; }
    virtual void CloseHandle();
    // Holds an inheritable duplicate of a handle of this process, with the same rights; false leaves it empty.
    virtual bool Duplicate(HANDLE handle);
    virtual ~clsGenericHandleObjectAutoRelease() { Release(); }

    // What was held goes first.
    void Take(HANDLE handle, bool close);
    // Closes the handle if it is this object's to close; the holder is empty afterwards.
    void Release();
    // Forgets the handle without closing it, and gives it.
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
