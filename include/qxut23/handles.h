/* Handle tracking: finds handles that a program has never closed.
 *
 * The program reports each handle that it creates and deletes, by kind. The library keeps a list for each kind, with
 * the twenty nearest return addresses of each creation. When the library is unloaded or the process ends, it writes the
 * handles that are left to the debug output, as in "LOST PEN HANDLE 0X0000000001A00043:". In a developer run (the
 * environment variable USER is "qvx") the return addresses follow.
 *
 * Two snapshots show which handles were created and deleted in between.
 */
#ifndef QXUT23_HANDLES_H
#define QXUT23_HANDLES_H

#include <qxut23/base.h>

QXUT_EXTERN_C_BEGIN

/* Operations of UtilHandleListMgr. */
#define QXUT_HANDLES_REPORT 0    /* reports all handles of the kind as lost, even if they were reported before */
#define QXUT_HANDLES_ADD 1       /* adds the handle; if it is in the list, counts it once more */
#define QXUT_HANDLES_REMOVE 2    /* removes the handle once; unknown handles are ignored */
#define QXUT_HANDLES_COUNT 3     /* returns the number of handles in the list */
#define QXUT_HANDLES_CONTAINS 4  /* returns 1 if the handle is in the list, otherwise 0 */
#define QXUT_HANDLES_SNAPSHOT 10 /* stores a copy of the kind's list */
/* Removes the two newest snapshots and reports their differences: first the numbers of new and deleted handles, then
   the handles. Does nothing if there are fewer than two snapshots. */
#define QXUT_HANDLES_COMPARE 11

/* Manages the handles of a kind. `kind` is a value of GetObjectType or any other number up to 65,535; negative numbers
   count as 0, and with larger ones the call does nothing. Handles are compared by value and never passed to the system.
   Returns 0, also for unknown operations, except where an operation returns something. Any thread may call it. */
QXUT_API uint32_t UtilHandleListMgr(int32_t kind, int32_t operation, const void* handle);

QXUT_EXTERN_C_END

#endif
