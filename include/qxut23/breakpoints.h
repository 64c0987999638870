/* Data breakpoints: find out who overwrites a variable.
 *
 * The processor can watch four places of memory for each thread. When the thread touches a watched place, the system
 * raises EXCEPTION_SINGLE_STEP right after the access: a debugger stops there, or a vectored exception handler is
 * called with the thread's registers; Dr6 has the bit of the slot.
 *
 * On linux a hit is a SIGTRAP for the thread. The library's layer offers it to the handlers that
 * AddVectoredExceptionHandler has registered, then to the previous handler of SIGTRAP; without either it ends the
 * process. Setting a breakpoint takes a performance event of the kernel (perf_event_paranoid of at most 2) or, where
 * that is refused, the right to trace the own process. Accesses by the kernel, such as a read() into the place, aren't
 * seen.
 */
#ifndef QXUT23_BREAKPOINTS_H
#define QXUT23_BREAKPOINTS_H

#include <qxut23/base.h>

QXUT_EXTERN_C_BEGIN

/* The handle of a data breakpoint. It belongs to the thread that has set it. */
typedef struct QXUT_DATABP* HDATABP;

/* Watches `size` bytes (1, 2, 4 or 8) at `address` for the calling thread: only writes if `writeOnly` isn't 0,
   otherwise also reads. The processor watches aligned places only: an address that isn't a multiple of the size stands
   for the place that contains it. Returns a handle, which UtilRemoveDataBP must release, even if no breakpoint could be
   set (all four are taken, the size is another one, or the system forbids it); the debug output has the reason then.
   Returns null only if memory runs out. Not available on processors other than x86-64. */
QXUT_API HDATABP UtilSetDataBP(uint64_t address, uint32_t size, int32_t writeOnly);

/* Removes a data breakpoint of the calling thread and releases the handle. Null is ignored. A breakpoint that isn't
   removed ends with its thread. */
QXUT_API void UtilRemoveDataBP(HDATABP breakpoint);

QXUT_EXTERN_C_END

#endif
