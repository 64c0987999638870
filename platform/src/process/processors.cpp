// The processors that a process may use, in groups of 64.
#include <processtopologyapi.h>
#include <winbase.h>

#include "base/handle_table.h"
#include "base/pseudo_handles.h"
#include "process/process_object.h"

#include <bit>
#include <optional>
#include <vector>

#include <sched.h>
#include <unistd.h>

using namespace qxplatform;

namespace
{

constexpr unsigned kProcessorsOfGroup = 64;

// Returns the affinity mask for each group, or an empty list if there is no such process.
std::vector<DWORD_PTR> ProcessorsOf(pid_t process)
{
    constexpr std::size_t kMostGroups = 4096;
    for (std::size_t groups = 16; groups <= kMostGroups; groups *= 2)
    {
        std::vector<DWORD_PTR> mask(groups);
        const auto set = reinterpret_cast<cpu_set_t*>(mask.data());
        if (sched_getaffinity(process, groups * sizeof(DWORD_PTR), set) == 0)
            return mask;
        if (errno != EINVAL) // EINVAL means that the kernel has more processors than fit
            break;
    }
    return {};
}

// Returns the process id of a handle for sched_getaffinity. Empty with a last error if the handle is invalid.
std::optional<pid_t> ProcessIdOf(HANDLE handle)
{
    if (IsCurrentProcess(handle))
        return getpid();
    const Ref<ProcessObject> process = LookUp<ProcessObject>(handle);
    return process ? std::optional(process->id) : std::nullopt;
}

DWORD_PTR FirstOf(std::size_t count)
{
    return count >= kProcessorsOfGroup ? ~DWORD_PTR{0} : (DWORD_PTR{1} << count) - 1;
}

unsigned CurrentProcessor()
{
    const int processor = sched_getcpu();
    return processor < 0 ? 0 : static_cast<unsigned>(processor);
}

} // namespace

DWORD WINAPI GetCurrentProcessorNumber(void)
{
    return CurrentProcessor() % kProcessorsOfGroup;
}

void WINAPI GetCurrentProcessorNumberEx(PPROCESSOR_NUMBER ProcNumber)
{
    const unsigned processor = CurrentProcessor();
    *ProcNumber = {
        static_cast<WORD>(processor / kProcessorsOfGroup), static_cast<BYTE>(processor % kProcessorsOfGroup), 0};
}

// As on the system, both masks are zero if the process has processors in several groups.
BOOL WINAPI GetProcessAffinityMask(HANDLE hProcess, PDWORD_PTR lpProcessAffinityMask, PDWORD_PTR lpSystemAffinityMask)
{
    const std::optional<pid_t> id = ProcessIdOf(hProcess);
    if (!id)
        return FALSE;
    const std::vector<DWORD_PTR> processors = ProcessorsOf(*id);
    if (processors.empty())
        return FailErrno();
    DWORD_PTR own = 0;
    std::size_t groups = 0;
    for (const DWORD_PTR group : processors)
    {
        groups += group != 0 ? 1 : 0;
        own |= group;
    }
    const bool isOne = groups == 1;
    *lpProcessAffinityMask = isOne ? own : 0;
    *lpSystemAffinityMask = isOne ? own | FirstOf(static_cast<std::size_t>(sysconf(_SC_NPROCESSORS_ONLN))) : 0;
    return TRUE;
}

BOOL WINAPI GetProcessGroupAffinity(HANDLE hProcess, PUSHORT GroupCount, PUSHORT GroupArray)
{
    const std::optional<pid_t> id = ProcessIdOf(hProcess);
    if (!id)
        return FALSE;
    const std::vector<DWORD_PTR> processors = ProcessorsOf(*id);
    if (processors.empty())
        return FailErrno();
    USHORT found = 0;
    for (std::size_t group = 0; group < processors.size(); ++group)
    {
        if (processors[group] == 0)
            continue;
        if (found < *GroupCount)
            GroupArray[found] = static_cast<USHORT>(group);
        ++found;
    }
    const bool fits = found <= *GroupCount;
    *GroupCount = found;
    return fits || Fail(ERROR_INSUFFICIENT_BUFFER);
}

// Counts only the processors that this process may run on: a container may be limited to a part of the machine.
DWORD WINAPI GetActiveProcessorCount(WORD GroupNumber)
{
    DWORD count = 0;
    const std::vector<DWORD_PTR> processors = ProcessorsOf(getpid());
    for (std::size_t group = 0; group < processors.size(); ++group)
        if (GroupNumber == ALL_PROCESSOR_GROUPS || GroupNumber == group)
            count += static_cast<DWORD>(std::popcount(processors[group]));
    if (count == 0)
        SetLastError(ERROR_INVALID_PARAMETER);
    return count;
}
