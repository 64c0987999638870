#include <winbase.h>

#include "base/fail.h"
#include "threads/thread_object.h"

#include <algorithm>
#include <iterator>

#include <sys/resource.h>
#include <unistd.h>

namespace qxplatform
{
namespace
{

struct Level
{
    int priority;
    int nice; // relative to the process
};

constexpr Level kLevels[] = {
    {THREAD_PRIORITY_IDLE, 19},
    {THREAD_PRIORITY_LOWEST, 10},
    {THREAD_PRIORITY_BELOW_NORMAL, 5},
    {THREAD_PRIORITY_NORMAL, 0},
    {THREAD_PRIORITY_ABOVE_NORMAL, -5},
    {THREAD_PRIORITY_HIGHEST, -10},
    {THREAD_PRIORITY_TIME_CRITICAL, -20},
};

int NiceOfProcess()
{
    static const int nice = getpriority(PRIO_PROCESS, static_cast<id_t>(getpid()));
    return nice;
}

// Returns true if a thread whose priority has been lowered may return to normal priority.
bool MayGoBackToNormal()
{
    rlimit limit{};
    return geteuid() == 0 ||
           (getrlimit(RLIMIT_NICE, &limit) == 0 && static_cast<int>(limit.rlim_cur) >= 20 - NiceOfProcess());
}

} // namespace

// Stores the priority, and applies it to the scheduler if the process may restore the normal one.
BOOL ThreadObject::SetPriority(int priority)
{
    const Level* const level = std::find_if(
        std::begin(kLevels), std::end(kLevels), [priority](const Level& entry) { return entry.priority == priority; });
    if (level == std::end(kLevels))
        return Fail(ERROR_INVALID_PARAMETER);
    const bool isChange = _priority.exchange(priority) != priority;
    if (isChange && !HasEnded() && MayGoBackToNormal())
        setpriority(PRIO_PROCESS, _id, std::clamp(NiceOfProcess() + level->nice, -20, 19));
    return TRUE;
}

} // namespace qxplatform
