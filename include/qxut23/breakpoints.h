/* Data breakpoints: find out who overwrites a variable.
 *
 * The processor can watch four places of memory for each thread. When the thread touches a watched place, the system
 * raises EXCEPTION_SINGLE_STEP right after the access: a debugger stops there, or a vectored exception handler is
 * called with the thread's registers, where Dr6 has the bit of the breakpoint's slot set.
 *
 * On linux a hit is a SIGTRAP for the thread. The platform library passes it to the handlers registered with
 * AddVectoredExceptionHandler, then to the previous handler of SIGTRAP; without either, it ends the process. Setting a
 * breakpoint requires a performance event of the kernel (perf_event_paranoid of at most 2) or, if that is refused, the
 * right to trace the process itself. Accesses by the kernel, such as a read() into the place, aren't detected.
 */
#ifndef QXUT23_BREAKPOINTS_H
#define QXUT23_BREAKPOINTS_H

#include <qxut23/base.h>

QXUT_EXTERN_C_BEGIN

/* The handle of a data breakpoint. It belongs to the thread that has set it. */
typedef struct QXUT_DATABP* HDATABP;

/* Watches `size` bytes (1, 2, 4 or 8) at `address` for the calling thread: only writes if `writeOnly` isn't 0,
   otherwise also reads. The processor watches aligned places only: an unaligned address is rounded down to a multiple
   of the size. Returns a handle, which UtilRemoveDataBP must release, even if no breakpoint could be set (all four are
   in use, the size is invalid, or the system forbids it); the reason is written to the debug output then. Returns null
   only if memory runs out. Not available on processors other than x86-64. */
QXUT_API HDATABP UtilSetDataBP(uint64_t address, uint32_t size, int32_t writeOnly);

/* Removes a data breakpoint of the calling thread and releases the handle. Null is ignored. A breakpoint that isn't
   removed ends with its thread. */
QXUT_API void UtilRemoveDataBP(HDATABP breakpoint);

QXUT_EXTERN_C_END

#endif
