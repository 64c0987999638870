#include "base/futex.h"

#include <climits>

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace qxplatform
{

void FutexWait(LONG* word, LONG value, const timespec* end)
{
    syscall(SYS_futex, word, FUTEX_WAIT_BITSET_PRIVATE, value, end, nullptr, FUTEX_BITSET_MATCH_ANY);
}

void FutexWakeOne(LONG* word)
{
    syscall(SYS_futex, word, FUTEX_WAKE_PRIVATE, 1, nullptr, nullptr, 0);
}

void FutexWakeAll(LONG* word)
{
    syscall(SYS_futex, word, FUTEX_WAKE_PRIVATE, INT_MAX, nullptr, nullptr, 0);
}

} // namespace qxplatform
