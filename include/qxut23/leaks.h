/* The live objects of tracked heaps (qxut23/heaps.h), grouped by the code that allocated them. */
#ifndef QXUT23_LEAKS_H
#define QXUT23_LEAKS_H

#include <qxut23/heaps.h>

QXUT_EXTERN_C_BEGIN

/* The greatest number of object addresses in a group. */
#define QXUT_HEAPLEAK_MOST_ADDRESSES 8

/* The live objects that were allocated by one call chain. All objects without a call chain form one group: plain
   objects, objects with QXUT_OBJECT_NO_CHAIN, and blocks with a damaged header. */
typedef struct QxHeapLeak
{
    uint32_t size;                /* size of the struct in bytes; later versions may append fields */
    uint32_t tag;                 /* tag of one of the objects (see UtilHeapObjectAllocExt); 0 for plain objects */
    uint64_t objectCount;         /* number of objects, at least 1 */
    uint64_t byteCount;           /* sum of the sizes as they were allocated, without headers and fences */
    uint32_t firstTick;           /* time of the oldest allocation, in ms (GetTickCount, which wraps after 49.7 days) */
    uint32_t lastTick;            /* time of the latest allocation; both are 0 if there are only plain objects */
    uint32_t addressCount;        /* the smaller of objectCount and QXUT_HEAPLEAK_MOST_ADDRESSES */
    uint32_t lineCount;           /* number of callers, at most 30; 0 without a call chain */
    const void* const* addresses; /* addresses of some of the objects */
    const QXWCHAR* const* lines;  /* the callers, innermost first: "module!function + 0x1f (file, line 12)" */
} QxHeapLeak;

/* Receives a group. The struct and everything that it points to are valid during the call. Other threads may free the
   objects at any time. The function may call any function of the library, and use the heaps. */
typedef void (*QxHeapLeakProc)(void* user, const QxHeapLeak* leak);

/* Groups the live objects by the call chains that allocated them, and calls `receive` for each group, in descending
   order of bytes. The objects may belong to one heap (`heap`; `job` is its job or null), to all heaps of a job (`job`;
   `heap` is null), or to all heaps of the process (both are null). Invalid handles are detected.

   - mostGroups: the largest number of groups to pass to `receive`; 0 means all.
   - user: passed to `receive`.

   The objects are counted before the first call of `receive`; until that is done, other threads that use the heaps
   wait. Symbols are read afterwards, without holding the heaps' lock. Reading them takes up to about 60 s for large
   programs. Lines are the texts of QxDescribeAddresses (addresses.h); where that fails, they are plain addresses
   ("0x7ffd0000").

   Returns the number of all groups, QXUT_HEAP_FAILED if a handle is invalid, `receive` is null or memory runs out, or
   QXUT_HEAP_NOT_SUPPORTED if the system can't list the blocks of a heap. */
QXUT_API int32_t QxHeapLeaks(HUTHEAPJOB job, HUTHEAP heap, uint32_t mostGroups, QxHeapLeakProc receive, void* user);

QXUT_EXTERN_C_END

#endif
