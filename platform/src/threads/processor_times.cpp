#include "threads/processor_times.h"

#include "time/file_time.h"

#include <cstdio>
#include <cstring>

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace qxplatform
{
namespace
{

LONGLONG UnitsOfClock(const timeval& time)
{
    return time.tv_sec * kUnitsPerSecond + time.tv_usec * (kUnitsPerSecond / 1'000'000);
}

} // namespace

ProcessorTimes ProcessorTimesOfThisThread()
{
    rusage usage{};
    getrusage(RUSAGE_THREAD, &usage);
    return {UnitsOfClock(usage.ru_utime), UnitsOfClock(usage.ru_stime)};
}

// Returns zeros if the thread has ended. Allocates nothing, because a caller may run out of memory while it ends a
// thread.
ProcessorTimes ProcessorTimesOf(DWORD threadId)
{
    char buffer[1024] = {};
    char path[40];
    std::snprintf(path, sizeof path, "/proc/self/task/%u/stat", static_cast<unsigned>(threadId));
    const int file = open(path, O_RDONLY | O_CLOEXEC);
    if (file < 0)
        return {};
    const ssize_t length = read(file, buffer, sizeof buffer - 1);
    close(file);
    // The name, in parentheses, may contain any characters. Eleven fields separate it from the times.
    const char* const nameEnd = length > 0 ? std::strrchr(buffer, ')') : nullptr;
    unsigned long user = 0;
    unsigned long kernel = 0;
    if (nameEnd == nullptr ||
        std::sscanf(nameEnd + 1, " %*c %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %lu %lu", &user, &kernel) != 2)
        return {};
    const LONGLONG unitsPerTick = kUnitsPerSecond / sysconf(_SC_CLK_TCK);
    return {static_cast<LONGLONG>(user) * unitsPerTick, static_cast<LONGLONG>(kernel) * unitsPerTick};
}

} // namespace qxplatform
