// A locked block of global memory.
#pragma once

#include <windows.h>

#include <cstddef>

namespace qx
{

// Locks a block of global memory for the lifetime of the object, and optionally frees it in the destructor. Errors in
// the destructor are reported to the debug output unless SetReport(false) was called. A failure to lock is reported
// immediately through OutputDebugStringW.
class clsGlobalLock
{
public:
    // Allocates a block and frees it in the destructor. IsLocked() returns false if memory ran out.
    clsGlobalLock(UINT flags, std::size_t size);
    // Locks the caller's block.
    clsGlobalLock(HGLOBAL memory, bool freeIt);
    clsGlobalLock(const clsGlobalLock&) = delete;
    clsGlobalLock& operator=(const clsGlobalLock&) = delete;
    ~clsGlobalLock();

    bool IsLocked() const { return _locked != nullptr; }
    void* Get() const { return _locked; }
    HGLOBAL Memory() const { return _memory; }
    // Unlocks the block and returns it to the caller, who owns it.
    HGLOBAL Release();
    void SetFree(bool freeIt) { _freeIt = freeIt; }
    void SetReport(bool report) { _report = report; }

private:
    void Lock();
    void Unlock();
    void Free();

    HGLOBAL _memory = nullptr;
    void* _locked = nullptr;
    bool _freeIt = true;
    bool _report = true;
};

} // namespace qx
