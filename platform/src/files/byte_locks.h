// The byte ranges that callers have locked through one opened file.
#pragma once

#include "base/mutex.h"
#include "files/range_lock.h"

#include <minwindef.h>

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <vector>

namespace qxplatform
{

class ByteLocks
{
public:
    // Locks the range exclusively, or returns ERROR_LOCK_VIOLATION immediately.
    DWORD Lock(int descriptor, bool canWrite, std::uint64_t offset, std::uint64_t length);

    // Unlocks a range that was locked with the same offset and length. Otherwise returns ERROR_NOT_LOCKED.
    DWORD Unlock(int descriptor, std::uint64_t offset, std::uint64_t length);

private:
    struct Record
    {
        std::uint64_t offset;
        std::uint64_t length;
    };

    Mutex _lock;
    std::vector<Record> _records;
};

// Returns true if others have locked a part of the range against a transfer of this kind. Only locks taken through a
// descriptor with write access block reading by others; any lock blocks writing.
bool IsLockedByOthers(int descriptor, LockKind transfer, std::int64_t offset, std::size_t length);

} // namespace qxplatform
