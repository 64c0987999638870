#include "sync/futex.h"

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace qxplatform
{

void FutexWait(LONG* word, LONG value)
{
    syscall(SYS_futex, word, FUTEX_WAIT_PRIVATE, value, nullptr, nullptr, 0);
}

void FutexWakeOne(LONG* word)
{
    syscall(SYS_futex, word, FUTEX_WAKE_PRIVATE, 1, nullptr, nullptr, 0);
}

} // namespace qxplatform
