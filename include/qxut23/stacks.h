/* Stack traces and lists of modules.
 *
 * The first two functions write to the debug output (see debug.h). They do nothing while no debug output is received.
 * They may be called from any thread and don't change the stack, the program or its modules.
 *
 * The others deliver lists of records with symbols, source lines, parameters and local variables, through a job. Only
 * one job of the process has a session of the debug-help library at a time. A job is used by one thread at a time,
 * which need not be the thread that opened it.
 */
#ifndef QXUT23_STACKS_H
#define QXUT23_STACKS_H

#include <qxut23/base.h>

QXUT_EXTERN_C_BEGIN

/* Writes the modules whose code is being executed by the calling thread, innermost first: a line " [called by PATH]"
   for each return address of the stack, and an empty line at the end. At most 20 lines are written.

   - reserved: ignored.
   - skip: the number of return addresses to leave out. The first address is in this library. A value above 256 writes
     nothing at all.

   Addresses outside of all modules, for example in generated code, are left out. */
QXUT_API void UtilStackTrace(uint32_t reserved, uint32_t skip);

/* Writes the modules of the process in the order of their addresses, as a block with the heading "Memory image
   addresses of modules:" and a line "0xFIRST-0xLAST: PATH" for each. The hexadecimal addresses are the
   bounds of the module's first region: the pages at its base that have the same protection. */
QXUT_API void UtilListModules(void);

/* A parameter or local variable of a frame. */
typedef struct DBGParameter
{
    uint32_t kind; /* how to read `value`, see below */
    uint8_t isLocal;
    uint8_t padding[3];
    union
    {
        uint64_t number;     /* kinds 0 (32 bits), 1, 3 (signed), 8 (a pointer); kind 2 is a signed 32-bit number */
        double real;         /* kind 4 */
        const char* narrow;  /* kind 5; points into the walked program and may be invalid */
        const QXWCHAR* wide; /* kinds 6 and 7; may be invalid, too; "@@@..." is a message instead of the text */
    } value;
    char name[64];
} DBGParameter;

/* A frame of a stack. Texts are zero-terminated and truncated to the size of their fields. */
typedef struct DBGStackTraceItem
{
    uint32_t size;         /* 9432, set by the library */
    uint32_t addressOnly;  /* 1: only the address and the module are known */
    uint64_t address;      /* the frame's instruction address: a return address, except in the innermost frame */
    char symbol[1024];     /* the linker's name; empty if there is no symbol */
    char name[1024];       /* the readable name, without parameters */
    char fullName[1024];   /* the readable name, with parameters */
    uint64_t displacement; /* from the symbol's start */
    uint32_t lineDisplacement;
    uint32_t line;
    char file[260]; /* empty if the line isn't known */
    char symbolType[1024];
    uint64_t moduleBase;
    char module[1024];      /* name of the module, or its path if only the address is known */
    int32_t parameterCount; /* at most 50; 4 if there is no symbol */
    DBGParameter parameters[50];
} DBGStackTraceItem;

/* A loaded module. */
typedef struct DBGModuleItem
{
    uint32_t size; /* 832 */
    char path[260];
    char name[260];
    char symbolType[32];
    uint64_t base;
    uint32_t imageSize;
    char description[64];
    char company[64];
    char version[128];
} DBGModuleItem;

struct _GUID;

/* Lists. The first three functions are those of every COM interface, and QueryInterface finds only IUnknown. Items
 * belong to the list and its clones, and are valid until the last of these is released.
 *
 * Next stores the next `count` items, and their number in `fetched`, which may be null. It returns 0 if there were
 * `count` items, else 1. Skip returns 0 if there were `count` items to skip, else 1. Clone creates a list of the
 * same items with a position of its own, at the start. IsEmpty returns 1 or 0. */
#ifdef __cplusplus

struct IDBGStackTraceList
{
    virtual QXHRESULT QXUT_COMCALL QueryInterface(const struct _GUID& iid, void** object) = 0;
    virtual QXULONG QXUT_COMCALL AddRef() = 0;
    virtual QXULONG QXUT_COMCALL Release() = 0;

    virtual QXHRESULT QXUT_COMCALL Next(QXULONG count, DBGStackTraceItem** items, QXULONG* fetched) = 0;
    virtual QXHRESULT QXUT_COMCALL Skip(QXULONG count) = 0;
    virtual QXHRESULT QXUT_COMCALL Reset() = 0;
    virtual QXHRESULT QXUT_COMCALL Clone(IDBGStackTraceList** clone) = 0;
    virtual int32_t QXUT_COMCALL IsEmpty() = 0;
};

/* A list of modules in the order of their base addresses. */
struct IDBGModuleList
{
    virtual QXHRESULT QXUT_COMCALL QueryInterface(const struct _GUID& iid, void** object) = 0;
    virtual QXULONG QXUT_COMCALL AddRef() = 0;
    virtual QXULONG QXUT_COMCALL Release() = 0;

    virtual QXHRESULT QXUT_COMCALL Next(QXULONG count, DBGModuleItem** items, QXULONG* fetched) = 0;
    virtual QXHRESULT QXUT_COMCALL Skip(QXULONG count) = 0;
    virtual QXHRESULT QXUT_COMCALL Reset() = 0;
    virtual QXHRESULT QXUT_COMCALL Clone(IDBGModuleList** clone) = 0;
    virtual int32_t QXUT_COMCALL IsEmpty() = 0;
};

#else

typedef struct IDBGStackTraceList
{
    const struct IDBGStackTraceListVtbl* lpVtbl;
} IDBGStackTraceList;

typedef struct IDBGStackTraceListVtbl
{
    QXHRESULT(QXUT_COMCALL* QueryInterface)(IDBGStackTraceList* self, const struct _GUID* iid, void** object);
    QXULONG(QXUT_COMCALL* AddRef)(IDBGStackTraceList* self);
    QXULONG(QXUT_COMCALL* Release)(IDBGStackTraceList* self);

    QXHRESULT(QXUT_COMCALL* Next)
    (IDBGStackTraceList* self, QXULONG count, DBGStackTraceItem** items, QXULONG* fetched);
    QXHRESULT(QXUT_COMCALL* Skip)(IDBGStackTraceList* self, QXULONG count);
    QXHRESULT(QXUT_COMCALL* Reset)(IDBGStackTraceList* self);
    QXHRESULT(QXUT_COMCALL* Clone)(IDBGStackTraceList* self, IDBGStackTraceList** clone);
    int32_t(QXUT_COMCALL* IsEmpty)(IDBGStackTraceList* self);
} IDBGStackTraceListVtbl;

typedef struct IDBGModuleList
{
    const struct IDBGModuleListVtbl* lpVtbl;
} IDBGModuleList;

typedef struct IDBGModuleListVtbl
{
    QXHRESULT(QXUT_COMCALL* QueryInterface)(IDBGModuleList* self, const struct _GUID* iid, void** object);
    QXULONG(QXUT_COMCALL* AddRef)(IDBGModuleList* self);
    QXULONG(QXUT_COMCALL* Release)(IDBGModuleList* self);

    QXHRESULT(QXUT_COMCALL* Next)(IDBGModuleList* self, QXULONG count, DBGModuleItem** items, QXULONG* fetched);
    QXHRESULT(QXUT_COMCALL* Skip)(IDBGModuleList* self, QXULONG count);
    QXHRESULT(QXUT_COMCALL* Reset)(IDBGModuleList* self);
    QXHRESULT(QXUT_COMCALL* Clone)(IDBGModuleList* self, IDBGModuleList** clone);
    int32_t(QXUT_COMCALL* IsEmpty)(IDBGModuleList* self);
} IDBGModuleListVtbl;

#endif

typedef struct QxDebugHelpJob* HDEBUGHELPJOB;

/* Opens a job. While another job is open, the call waits up to 5 s for that job to be closed. If it isn't closed by
   then, the new job has no session, and its functions return 0. Returns null only if memory runs out.

   The job's own thread holds the critical section of UtilGetDBGHELPThreadingCS until the job is closed. Don't hold that
   critical section while you open a job, and don't enter it while your thread has a job open. */
QXUT_API HDEBUGHELPJOB UtilDebugHelpJobOpen(void);

/* Closes a job, on any thread. Null is ignored. Lists obtained from it stay valid. */
QXUT_API void UtilDebugHelpJobClose(HDEBUGHELPJOB job);

/* Sets an option of a job. Unknown keys are ignored.
   - 1: the largest number of frames. Default 100.
   - 2: 0 walks on the job's thread, 1 (the default) on a separate thread.
   - 3: what the records contain. 0: addresses and modules. 1 (the default): everything. Any other value is a sum of 2
     (symbol, line, variables) and 4 (parameters that are not in memory, if the system knows them), plus 1 for the
     module. */
QXUT_API void UtilDebugHelpSetOption(HDEBUGHELPJOB job, uint32_t key, uint32_t value);

/* Walks the stack of a context (a CONTEXT of the system), which isn't changed. With a null context, walks the calling
   thread's own stack. Stores a list, which the caller releases. Returns 1 on success, and 0 with a null list if the job
   is null or has no session, if memory runs out, or if the walk takes longer than 60 s. In the last case the job is
   unusable, and no later job has a session. */
QXUT_API int32_t UtilDebugHelpGetStackTrace(HDEBUGHELPJOB job, struct IDBGStackTraceList** list, const void* context);

/* Stores a list of the modules of the process, which the caller releases. Returns like UtilDebugHelpGetStackTrace. */
QXUT_API int32_t UtilDebugHelpGetModuleList(HDEBUGHELPJOB job, struct IDBGModuleList** list);

/* Store the address of a critical section of the system that lives as long as the library: the one that is held while a
   job is open, and one for the callers' use of graphics. */
QXUT_API void UtilGetDBGHELPThreadingCS(void** section);
QXUT_API void UtilGetGDIThreadingCS(void** section);

QXUT_EXTERN_C_END

#endif
