#pragma once

#include <windows.h>

namespace qx
{

class clsCriticalSection
{
public:
    clsCriticalSection() { InitializeCriticalSection(&_section); }
    explicit clsCriticalSection(DWORD spinCount) { InitializeCriticalSectionAndSpinCount(&_section, spinCount); }
    clsCriticalSection(const clsCriticalSection&) = delete;
    clsCriticalSection& operator=(const clsCriticalSection&) = delete;
    ~clsCriticalSection() { DeleteCriticalSection(&_section); }

    void Enter() { EnterCriticalSection(&_section); }
    bool TryEnter() { return TryEnterCriticalSection(&_section) != FALSE; }
    void Leave() { LeaveCriticalSection(&_section); }

private:
    CRITICAL_SECTION _section;
};

// Owns a critical section until the end of the scope.
class clsCriticalSectionLock
{
public:
    explicit clsCriticalSectionLock(clsCriticalSection& section) : _section(section) { _section.Enter(); }
    clsCriticalSectionLock(const clsCriticalSectionLock&) = delete;
    clsCriticalSectionLock& operator=(const clsCriticalSectionLock&) = delete;
    ~clsCriticalSectionLock() { _section.Leave(); }

private:
    clsCriticalSection& _section;
};

} // namespace qx
