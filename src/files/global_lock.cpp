#include "files/global_lock.h"

#include "core/debug_line.h"
#include "core/text/string.h"

#include <utility>

namespace qx
{

namespace
{

int LockCount(HGLOBAL memory)
{
    return static_cast<int>(GlobalFlags(memory) & GMEM_LOCKCOUNT);
}

} // namespace

clsGlobalLock::clsGlobalLock(UINT flags, std::size_t size) : _memory(GlobalAlloc(flags, size))
{
    Lock();
}

clsGlobalLock::clsGlobalLock(HGLOBAL memory, bool freeIt) : _memory(memory), _freeIt(freeIt)
{
    Lock();
}

clsGlobalLock::~clsGlobalLock()
{
    if (_locked != nullptr)
    {
        Unlock();
    }
    if (_freeIt && _memory != nullptr)
    {
        Free();
    }
}

HGLOBAL clsGlobalLock::Release()
{
    if (_locked != nullptr)
    {
        Unlock();
    }
    _locked = nullptr;
    return std::exchange(_memory, nullptr);
}

void clsGlobalLock::Lock()
{
    if (_memory == nullptr)
    {
        return;
    }
    _locked = GlobalLock(_memory);
    if (_locked == nullptr)
    {
        const DWORD error = GetLastError();
        const String line(String::kFormatted, L"clsGlobalLock::Lock(): Failed to lock handle %#p: %s", _memory,
            String::SystemErrorText(error).Text());
        OutputDebugStringW(line.Text());
        _freeIt = false;
        _report = false;
    }
}

void clsGlobalLock::Unlock()
{
    SetLastError(NO_ERROR);
    const BOOL stillLocked = GlobalUnlock(_memory);
    const DWORD error = GetLastError();
    if (stillLocked)
    {
        if (_report)
        {
            DebugLine(L"clsGlobalLock::Unlock(%#p): The handle is still locked %d times: %s", _memory,
                LockCount(_memory), String::SystemErrorText(error).Text());
        }
    }
    else if (error != NO_ERROR)
    {
        DebugLine(
            L"clsGlobalLock::Unlock(%#p): Failed to unlock handle: %s", _memory, String::SystemErrorText(error).Text());
    }
}

void clsGlobalLock::Free()
{
    if (GlobalFree(_memory) == nullptr || !_report)
    {
        return;
    }
    const String error = String::SystemErrorText(GetLastError());
    if (const int locks = LockCount(_memory); locks != 0)
    {
        DebugLine(L"clsGlobalLock::Free(%#p): Failed to free handle: The handle is still locked %d times: %s", _memory,
            locks, error.Text());
    }
    else
    {
        DebugLine(L"clsGlobalLock::Free(%#p): Failed to free handle: %s", _memory, error.Text());
    }
}

} // namespace qx
