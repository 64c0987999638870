#include "files/file.h"

#include "core/debug_line.h"
#include "files/lock_back_off.h"

#include <algorithm>

namespace qx
{

namespace
{

constexpr ULONGLONG kLongestWait = 10000; // ms
constexpr int kLeastTries = 3;

struct scRange
{
    ULARGE_INTEGER offset;
    ULARGE_INTEGER length;
};

scRange SystemRange(uint64_t offset, uint64_t length)
{
    scRange range = {};
    range.offset.QuadPart = offset;
    range.length.QuadPart = length;
    return range;
}

} // namespace

const scFileLock* clsFile::Lock(uint64_t offset, uint64_t length)
{
    if (!_handle.IsValid() && !_stream)
    {
        return nullptr;
    }
    const ULONGLONG start = GetTickCount64();
    clsLockBackOff backOff;
    for (int tries = 1; !TryLock(offset, length); ++tries)
    {
        if (tries >= kLeastTries && GetTickCount64() - start >= kLongestWait)
        {
            return nullptr;
        }
        backOff.Wait();
    }
    return &_locks.Append(scFileLock{offset, length});
}

// A stream that says that it has no locks counts as locked, so that the caller isn't held up for something that won't
// come.
bool clsFile::TryLock(uint64_t offset, uint64_t length)
{
    const scRange range = SystemRange(offset, length);
    if (_handle.IsValid())
    {
        return LockFile(_handle.Get(), range.offset.LowPart, range.offset.HighPart, range.length.LowPart,
                   range.length.HighPart) != FALSE;
    }
    const HRESULT result = _stream->LockRegion(range.offset, range.length, LOCK_EXCLUSIVE);
    return SUCCEEDED(result) || result == STG_E_INVALIDFUNCTION || result == E_NOTIMPL;
}

// The lock is looked for by its address, so one that is gone already isn't read.
void clsFile::Unlock(const scFileLock* lock)
{
    if (lock == nullptr)
    {
        return;
    }
    if (std::none_of(_locks.begin(), _locks.end(), [lock](const scFileLock& held) { return &held == lock; }))
    {
        DebugLine(L"\nFile '%s': %s\n", LogName(),
            L"tried to unlock a lock that has already been removed (or has never existed)");
        return;
    }
    ReleaseRange(*lock);
    _locks.RemoveIf([lock](const scFileLock& held) { return &held == lock; });
}

void clsFile::ReleaseRange(const scFileLock& lock)
{
    const scRange range = SystemRange(lock.offset, lock.length);
    if (_handle.IsValid())
    {
        UnlockFile(
            _handle.Get(), range.offset.LowPart, range.offset.HighPart, range.length.LowPart, range.length.HighPart);
    }
    else if (_stream)
    {
        _stream->UnlockRegion(range.offset, range.length, LOCK_EXCLUSIVE);
    }
}

} // namespace qx
