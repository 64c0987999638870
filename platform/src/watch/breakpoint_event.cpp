#include "watch/breakpoint_event.h"

#include <linux/hw_breakpoint.h>
#include <linux/perf_event.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace qxplatform
{
namespace
{

// Marks the data of our events.
constexpr unsigned long long kMark = 0x7178'5741'5443'4800;

} // namespace

// The kernel's own accesses, for example of read() into the cell, aren't reported: unprivileged processes may not watch
// them.
Descriptor OpenBreakpointEvent(const Breakpoint& breakpoint, int slot)
{
    perf_event_attr event{};
    event.type = PERF_TYPE_BREAKPOINT;
    event.size = sizeof event;
    event.bp_type = breakpoint.isWriteOnly ? HW_BREAKPOINT_W : HW_BREAKPOINT_RW;
    event.bp_addr = breakpoint.Cell();
    event.bp_len = breakpoint.length;
    event.sample_period = 1;
    event.exclude_kernel = 1;
    event.exclude_hv = 1;
    event.sigtrap = 1;
    event.remove_on_exec = 1; // required by sigtrap
    event.sig_data = kMark | static_cast<unsigned>(slot);
    constexpr pid_t kThisThread = 0;
    constexpr int kAnyProcessor = -1;
    constexpr int kNoGroup = -1;
    return Descriptor(static_cast<int>(
        syscall(SYS_perf_event_open, &event, kThisThread, kAnyProcessor, kNoGroup, PERF_FLAG_FD_CLOEXEC)));
}

void CloseBreakpointEvent(Descriptor event)
{
    ioctl(event.Get(), PERF_EVENT_IOC_DISABLE, 0);
}

int SlotOfEvent(unsigned long long data)
{
    const unsigned long long slot = data ^ kMark;
    return slot < kBreakpointSlots ? static_cast<int>(slot) : -1;
}

} // namespace qxplatform
