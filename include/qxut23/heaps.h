/* Tracked heaps: private heaps of a client module that check their objects and report what is left.
 *
 * A client opens a job under its module name, creates heaps in the job, and allocates objects on the heaps. An object
 * of a debug heap has a header with the call chain of its allocation, and a fence behind its data. Damage, double frees
 * and objects that are left at the end are reported through the debug output (qxut23/debug.h). Result codes don't
 * depend on the debug output. qxut23/leaks.h shows at any time who allocated the live objects.
 *
 * Jobs that are open when the library is unloaded are freed with their heaps and objects, without a report.
 *
 * The functions may be called from any thread; one lock serialises them. Only objects without a heap are allocated and
 * freed without the lock.
 */
#ifndef QXUT23_HEAPS_H
#define QXUT23_HEAPS_H

#include <qxut23/base.h>

QXUT_EXTERN_C_BEGIN

/* A job and a heap. Handles are addresses. UtilJobClose, UtilHeapCreate and UtilHeapDelete detect invalid ones. All
   other functions trust a heap handle: with an invalid one, their behaviour is undefined. */
typedef struct QxUtHeapJob* HUTHEAPJOB;
typedef struct QxUtHeap* HUTHEAP;

/* Results of the functions below. */
#define QXUT_HEAP_OK 0
#define QXUT_HEAP_FAILED (-2)        /* invalid handle, or the operation failed */
#define QXUT_HEAP_CORRUPTED (-3)     /* the heap is corrupted */
#define QXUT_HEAP_LEFT_OVER (-5)     /* something was left, and has been deleted */
#define QXUT_HEAP_BAD_OBJECT (-6)    /* not an object of the heap, or a damaged one */
#define QXUT_HEAP_NOT_SUPPORTED (-7) /* the system lacks the function, or the heap is of the wrong kind */

/* Flags of a job. */
#define QXUT_HEAPJOB_DEBUG 0x40000000u /* every heap is a debug heap, unless it has QXUT_HEAP_NO_DEBUG */
#define QXUT_HEAPJOB_TRACE 0x80000000u /* each call writes its arguments and its result to the debug output */

/* Flags of a heap. */
#define QXUT_HEAP_NO_SERIALIZE 0x10u     /* the system heap has no lock of its own; these functions remain safe */
#define QXUT_HEAP_RAISE_EXCEPTIONS 0x20u /* allocations that fail for lack of memory raise STATUS_NO_MEMORY */
#define QXUT_HEAP_NO_DEBUG 0x40u         /* no debug heap, whatever the other flags and the job's say */
#define QXUT_HEAP_ILLEGAL 0x80u          /* creating a heap with this flag fails */
#define QXUT_HEAP_NO_WARNING 0x100u      /* no report of objects that are left when the heap is deleted */
#define QXUT_HEAP_DEBUG 0x40000000u      /* a debug heap */

/* Flags of an object. */
#define QXUT_OBJECT_ZERO 0x1u         /* fill with 0 */
#define QXUT_OBJECT_FILL 0x2u         /* fill with 0xF5, unless QXUT_OBJECT_ZERO is set */
#define QXUT_OBJECT_NO_CHAIN 0x4u     /* don't capture the call chain */
#define QXUT_OBJECT_PLAIN 0x40u       /* a plain object, even on a debug heap */
#define QXUT_OBJECT_DEBUG 0x40000000u /* a debug object, even on another heap */

/* Opens a job. If a job of this name exists, its reference count is raised and it keeps its flags. Names are compared
   exactly, but only the first 32 characters are stored, so a longer name always opens a new job. A null name is an
   empty one. Returns null only if memory runs out. */
QXUT_API HUTHEAPJOB UtilJobOpen(const QXWCHAR* name, uint32_t flags);

/* Lowers the job's reference count, and deletes the job and its heaps when the count reaches 0. Returns 0 (also if
   `job` is null), QXUT_HEAP_FAILED if there is no such job, or QXUT_HEAP_LEFT_OVER if the job had heaps. */
QXUT_API int32_t UtilJobClose(HUTHEAPJOB job);

/* Creates a heap. `name` may be null; only its first 32 characters are stored. Returns null if there is no such job,
   the flags are illegal, or memory runs out. */
QXUT_API HUTHEAP UtilHeapCreate(HUTHEAPJOB job, const QXWCHAR* name, uint32_t flags);

/* Deletes a heap and all of its objects. Returns 0 (also if `heap` is null), QXUT_HEAP_FAILED if there is no such heap,
   or QXUT_HEAP_LEFT_OVER if there were objects. */
QXUT_API int32_t UtilHeapDelete(HUTHEAP heap);

/* Returns the number of bytes in use on a debug heap, headers and fences included, at most 2^31 - 1; 0 if `heap` is
   null; or QXUT_HEAP_NOT_SUPPORTED for another heap. On systems that can't list the blocks of a heap, headers and
   fences aren't included. */
QXUT_API int32_t UtilHeapSize(HUTHEAP heap);

/* Returns the number of bytes in use on any heap, 0 if `heap` is null, or QXUT_HEAP_NOT_SUPPORTED if the system can't
   list the blocks of a heap. */
QXUT_API int32_t UtilHeapSizeObjects(HUTHEAP heap);

/* Allocates an object of `size` bytes, at most 2^31 - 1. Objects are aligned to 4 bytes only. If `heap` is null, the
   object has no heap and comes from the C runtime library. Returns null if memory runs out or the size is too large. */
QXUT_API void* UtilHeapObjectAlloc(HUTHEAP heap, uint32_t size, uint32_t flags);

/* The same, with a value that the header of a debug object keeps for the caller. `reserved` is not used. */
QXUT_API void* UtilHeapObjectAllocExt(HUTHEAP heap, uint32_t size, uint32_t flags, void* reserved, uint32_t tag);

/* Frees an object. `heap` is the heap of the object, or null if it has none. Returns 0. Returns QXUT_HEAP_BAD_OBJECT
   and changes nothing if the object is damaged, was freed before, or isn't an object of this heap. An object without a
   heap isn't checked. */
QXUT_API int32_t UtilHeapObjectFree(HUTHEAP heap, void* object);

/* Returns the size of an object as it was allocated, or QXUT_HEAP_BAD_OBJECT like UtilHeapObjectFree. */
QXUT_API int32_t UtilHeapObjectSize(HUTHEAP heap, const void* object);

/* Checks an object's block. On a debug heap, also checks the headers and fences of all debug objects up to the first
   damaged one, which is reported but doesn't change the result. With a null object, only this second check is done.
   Returns 0 (also if `heap` is null), QXUT_HEAP_CORRUPTED if `object` isn't a sound block of the heap, or
   QXUT_HEAP_NOT_SUPPORTED if the system can't list the blocks of a heap. */
QXUT_API int32_t UtilHeapValidate(HUTHEAP heap, const void* object);

/* Returns unused memory to the system. Returns 0 (also if `heap` is null), QXUT_HEAP_FAILED if it fails, or
   QXUT_HEAP_NOT_SUPPORTED if the system lacks the function. */
QXUT_API int32_t UtilHeapShrink(HUTHEAP heap);

QXUT_EXTERN_C_END

#endif
