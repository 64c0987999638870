#include "threads/processor_count.h"

#include "module/late_libraries.h"

#include <algorithm>
#include <bit>
#include <vector>

namespace qx
{
namespace
{

constexpr USHORT kUsualGroups = 256;
constexpr int kDispatchersWithoutLimit = 10;
constexpr unsigned kWorkersBeyondThat = 2;

// Returns an empty list if the system has no processor groups.
std::vector<USHORT> GroupsOfProcess()
{
    auto& groupsOf = Kernel32().p_GetProcessGroupAffinity;
    if (!groupsOf.IsThere())
        return {};
    std::vector<USHORT> groups(kUsualGroups);
    USHORT count = kUsualGroups;
    BOOL isKnown = groupsOf(GetCurrentProcess(), &count, groups.data());
    if (!isKnown && GetLastError() == ERROR_INSUFFICIENT_BUFFER)
    {
        groups.resize(count);
        isKnown = groupsOf(GetCurrentProcess(), &count, groups.data());
    }
    groups.resize(isKnown ? std::min<std::size_t>(count, groups.size()) : 0);
    return groups;
}

unsigned CountByGroups()
{
    auto& countOf = Kernel32().p_GetActiveProcessorCount;
    if (!countOf.IsThere())
        return 0;
    unsigned count = 0;
    for (const USHORT group : GroupsOfProcess())
        count += countOf(group);
    return count;
}

unsigned CountByMask()
{
    DWORD_PTR ofProcess = 0, ofSystem = 0;
    GetProcessAffinityMask(GetCurrentProcess(), &ofProcess, &ofSystem);
    return static_cast<unsigned>(std::popcount(ofProcess));
}

} // namespace

unsigned ProcessorCount()
{
    const unsigned count = CountByGroups();
    return count != 0 ? count : std::max(CountByMask(), 1u);
}

unsigned MaximumWorkers(unsigned wanted, unsigned processors, int dispatchers)
{
    const unsigned maximum = wanted != 0 ? wanted : std::max(processors, 2u) - 1;
    return dispatchers > kDispatchersWithoutLimit ? std::min(maximum, kWorkersBeyondThat) : maximum;
}

} // namespace qx
