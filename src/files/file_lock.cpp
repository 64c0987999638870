#include "files/file.h"

#include "core/debug_line.h"
#include "core/ticks.h"
#include "files/lock_back_off.h"

#include <cstdint>

namespace qx
{

namespace
{

constexpr unsigned long long kLongestWait = 10000; // ms
constexpr int kLeastTries = 3;

struct scRange
{
    ULARGE_INTEGER offset;
    ULARGE_INTEGER length;
};

scRange SystemRange(std::uint64_t offset, std::uint64_t length)
{
    scRange range = {};
    range.offset.QuadPart = offset;
    range.length.QuadPart = length;
    return range;
}

} // namespace

std::optional<scFileLock> clsFile::Lock(std::uint64_t offset, std::uint64_t length)
{
    if (!_handle.IsValid() && !_stream)
    {
        return std::nullopt;
    }
    const unsigned long long start = UtilGetTicks();
    clsLockBackOff backOff;
    for (int tries = 1; !TryLock(offset, length); ++tries)
    {
        if (tries >= kLeastTries && UtilGetTicks() - start >= kLongestWait)
        {
            return std::nullopt;
        }
        backOff.Wait();
    }
    return _locks.Append(scFileLock{offset, length});
}

// If the stream reports that it doesn't support locks, the range counts as locked. Retrying would only delay the
// caller.
bool clsFile::TryLock(std::uint64_t offset, std::uint64_t length)
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

// Releases the system's lock first and ignores the result. Only this object's record decides whether the lock existed.
void clsFile::Unlock(const std::optional<scFileLock>& lock)
{
    if (!lock)
    {
        return;
    }
    const scFileLock range = *lock; // a copy, because `lock` may refer to an element of _locks
    ReleaseRange(range);
    if (!_locks.Remove(range))
    {
        DebugLine(L"\nFile '%s': %s\n", LogName(),
            L"tried to unlock a lock that has already been removed (or has never existed)");
    }
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
