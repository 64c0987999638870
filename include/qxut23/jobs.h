/* Job pools: a caller's jobs run on a few worker threads, and their results come back on the caller's own thread.
 *
 * The order of calls: open a pool, add jobs, finalize it on the thread that owns the results, close it. Jobs may be
 * added and finalized again and again. Any thread may add jobs, also a job or a host; any thread may abort.
 *
 * Jobs and hosts are COM objects of the caller's. Their interfaces are declared here as they lie in memory, for callers
 * with and without the system's headers; a class that implements one may at the same time implement the system's.
 */
#ifndef QXUT23_JOBS_H
#define QXUT23_JOBS_H

#include <qxut23/base.h>

struct IUnknown;
struct _GUID; /* the system's identifier of an interface, 16 bytes */

/* The identifiers of the two interfaces, as initialisers of such a structure. */
#define QXUT_IID_IUTTHREADEDJOB                                                                                        \
    {                                                                                                                  \
        0x2989A6CF, 0x0467, 0x49FF,                                                                                    \
        {                                                                                                              \
            0xA1, 0x4A, 0x59, 0xE3, 0x38, 0x44, 0x47, 0x56                                                             \
        }                                                                                                              \
    }
#define QXUT_IID_IUTTHREADEDJOBHOST                                                                                    \
    {                                                                                                                  \
        0x42D1097D, 0x0FE6, 0x45E5,                                                                                    \
        {                                                                                                              \
            0xBB, 0x92, 0x7E, 0x20, 0x58, 0xAE, 0x45, 0xBE                                                             \
        }                                                                                                              \
    }

#ifdef __cplusplus

/* A job. The first three functions are those of every COM interface; the order of all is that of their slots.
 *
 * Run does the work; its result is ignored. It is called once, without any lock, on a worker, or on the thread that
 *   finalizes or closes the pool.
 * GetResult is read behind the Run of a job that ran on the calling thread. 0 or more for success, below 0 for failure.
 * GetGroup gives the group that the job belongs to, so that one group can be aborted; 0 for none.
 * CanRunOnWorker gives 0 for a job that must run on the thread that finalizes the pool. It is asked once, as the job is
 *   added.
 * GetGroup and CanRunOnWorker are called under the pool's lock: they must return at once. */
struct IUTThreadedJob
{
    virtual QXHRESULT QXUT_COMCALL QueryInterface(const struct _GUID& iid, void** object) = 0;
    virtual QXULONG QXUT_COMCALL AddRef() = 0;
    virtual QXULONG QXUT_COMCALL Release() = 0;

    virtual QXHRESULT QXUT_COMCALL Run() = 0;
    virtual QXHRESULT QXUT_COMCALL GetResult() = 0;
    virtual int32_t QXUT_COMCALL GetGroup() = 0;
    virtual int32_t QXUT_COMCALL CanRunOnWorker() = 0;
};

/* Who is told of finished jobs.
 *
 * OnJobDone gets the job's name and the job, null if the object that was added is none; both are valid during the call.
 *   0: the job is finished with, and the pool releases it. Else it is kept until the pool is finalized, whose host is
 *   told then and whose answer is ignored. A job's own host is told on the worker, under the pool's lock: it may call
 *   the pool's functions, but must not wait for another job.
 * WaitForJobs is asked of the host that finalizes, when nothing has come back at the moment. It gets the handle of an
 *   event that is set when a job is finished. 1 lets the library wait for that, a second at most; else the host has
 *   waited itself, for the event or for whatever else it has to serve. */
struct IUTThreadedJobHost
{
    virtual QXHRESULT QXUT_COMCALL QueryInterface(const struct _GUID& iid, void** object) = 0;
    virtual QXULONG QXUT_COMCALL AddRef() = 0;
    virtual QXULONG QXUT_COMCALL Release() = 0;

    virtual int32_t QXUT_COMCALL OnJobDone(const QXWCHAR* name, IUTThreadedJob* job) = 0;
    virtual int32_t QXUT_COMCALL WaitForJobs(void* event) = 0;
};

#else

/* The same in C; what the functions do is told above. */
typedef struct IUTThreadedJob
{
    const struct IUTThreadedJobVtbl* lpVtbl;
} IUTThreadedJob;

typedef struct IUTThreadedJobVtbl
{
    QXHRESULT(QXUT_COMCALL* QueryInterface)(IUTThreadedJob* self, const struct _GUID* iid, void** object);
    QXULONG(QXUT_COMCALL* AddRef)(IUTThreadedJob* self);
    QXULONG(QXUT_COMCALL* Release)(IUTThreadedJob* self);

    QXHRESULT(QXUT_COMCALL* Run)(IUTThreadedJob* self);
    QXHRESULT(QXUT_COMCALL* GetResult)(IUTThreadedJob* self);
    int32_t(QXUT_COMCALL* GetGroup)(IUTThreadedJob* self);
    int32_t(QXUT_COMCALL* CanRunOnWorker)(IUTThreadedJob* self);
} IUTThreadedJobVtbl;

typedef struct IUTThreadedJobHost
{
    const struct IUTThreadedJobHostVtbl* lpVtbl;
} IUTThreadedJobHost;

typedef struct IUTThreadedJobHostVtbl
{
    QXHRESULT(QXUT_COMCALL* QueryInterface)(IUTThreadedJobHost* self, const struct _GUID* iid, void** object);
    QXULONG(QXUT_COMCALL* AddRef)(IUTThreadedJobHost* self);
    QXULONG(QXUT_COMCALL* Release)(IUTThreadedJobHost* self);

    int32_t(QXUT_COMCALL* OnJobDone)(IUTThreadedJobHost* self, const QXWCHAR* name, IUTThreadedJob* job);
    int32_t(QXUT_COMCALL* WaitForJobs)(IUTThreadedJobHost* self, void* event);
} IUTThreadedJobHostVtbl;

#endif

QXUT_EXTERN_C_BEGIN

typedef struct QxUtThreadPool* HUTTHREADPOOL;

/* The result of the functions below for an argument that must not be null. */
#define QXUT_E_INVALIDARG ((int32_t)0x80070057)

/* Opens a pool with at most so many workers; 0 for one less than the processors of the process, but at least 1. The
   eleventh pool alive at once, and each one after it, has 2 at most. Workers begin with the jobs that need them, and
   end with the pool. `name` is what the threads are called in a debugger and in the debug output. Null only without
   memory. */
QXUT_API HUTTHREADPOOL UtilThreadPoolOpen(uint32_t maximumWorkers, const QXWCHAR* name);

/* Adds a job. `job` is any interface of an object that has IUTThreadedJob; one that hasn't passes through the pool
   without being run. The pool holds a reference to it, and to `host`, which may be null: it is told when the job is
   done. Once a pool was aborted, also if only for one group, further jobs are dropped: released without being run, and
   nobody is told. 0, or QXUT_E_INVALIDARG for a null pool. */
QXUT_API int32_t UtilThreadPoolAdd(
    HUTTHREADPOOL pool, const QXWCHAR* name, struct IUnknown* job, struct IUTThreadedJobHost* host);

/* Drops the jobs of a group, 0 for all of them, that no thread has begun, and those that are done and wait to be
   finalized; nobody is told. Jobs that run go on to their end. Only the first abort of a pool does anything. 0, or
   QXUT_E_INVALIDARG for a null pool. */
QXUT_API int32_t UtilThreadPoolAbort(HUTTHREADPOOL pool, int32_t group);

/* Runs the jobs that must run on this thread, tells `host` of each job that is done and was not taken by its own host,
   and returns when no job is left. A job that runs on a worker is left itself, so it must not call this; one that runs
   on the calling thread may. 0, or QXUT_E_INVALIDARG for a null pool or a null host. */
QXUT_API int32_t UtilThreadPoolFinalize(HUTTHREADPOOL pool, struct IUTThreadedJobHost* host);

/* Aborts all jobs, waits for those that run, and frees the pool. A pool of which only one group was aborted before
   finishes its other jobs first. Null is ignored. No other thread may use the pool any more, and no job or host of it
   may call this. */
QXUT_API void UtilThreadPoolClose(HUTTHREADPOOL pool);

QXUT_EXTERN_C_END

#endif
