// A locked block of global memory.
#pragma once

#include <windows.h>

#include <cstddef>

namespace qx
{

// Locks a block of global memory for its own life, and frees it at its end if it is told to. What goes wrong at the end
// goes to the debug output, unless SetReport(false); a failure to lock goes to the system's debug channel at once.
class clsGlobalLock
{
public:
    // A block of its own, freed at the end. IsLocked() tells whether there is memory.
    clsGlobalLock(UINT flags, std::size_t size);
    // A block of the caller's.
    clsGlobalLock(HGLOBAL memory, bool freeIt);
    clsGlobalLock(const clsGlobalLock&) = delete;
    clsGlobalLock& operator=(const clsGlobalLock&) = delete;
    ~clsGlobalLock();

    bool IsLocked() const { return _locked != nullptr; }
    void* Get() const { return _locked; }
    HGLOBAL Memory() const { return _memory; }
    // Unlocks the block now and leaves it to the caller.
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
