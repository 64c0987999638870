/* Job pools: the caller's jobs run on a few worker threads, and their results come back on the caller's own thread.
 *
 * Call order: open a pool, add jobs, finalize the pool on the thread that owns the results, close the pool. Adding and
 * finalizing may be repeated. Any thread may add jobs, including jobs and hosts themselves; any thread may abort.
 *
 * A job, a host or any other callback of this library may end its thread on linux (pthread_exit, or pthread_cancel of a
 * thread that waits inside the callback): the stack is unwound, locks and memory are released, and the job counts as
 * done. QueryInterface, AddRef and Release must not do so, and a thread must not be cancelled while the library itself
 * runs on it: a destructor that reaches a cancellation point ends the process. Threads that may be cancelled at any
 * moment call pthread_setcancelstate around calls of this library. On windows the end of a thread doesn't unwind the
 * stack, so a callback must not end its thread.
 *
 * A child process made by fork() has the pool but none of its workers. Queued jobs run on new workers or in
 * UtilThreadPoolFinalize. Jobs that were running on a worker are released without a report.
 *
 * Jobs and hosts are COM objects implemented by the caller. Their interfaces are declared here with their memory
 * layout, so that callers don't need the system's headers. A class that implements them may implement interfaces of the
 * system as well.
 */
#ifndef QXUT23_JOBS_H
#define QXUT23_JOBS_H

#include <qxut23/base.h>

struct IUnknown;
struct _GUID; /* the system's interface identifier, 16 bytes */

/* The identifiers of the two interfaces, as initialisers for such a structure. */
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

/* A job. The first three functions are those of every COM interface. The order of the functions is the order of their
 * vtable slots.
 *
 * Run does the work. It is called once, without any lock held, on a worker or on the thread that finalizes or closes
 * the pool. Its result is ignored.
 * GetResult is called after Run, on the same thread, if CanRunOnWorker returned 0. By convention, 0 or more means
 * success, a negative value failure; the pool ignores it.
 * GetGroup returns the group the job belongs to, or 0 for none. A group can be aborted as a whole.
 * CanRunOnWorker returns 0 if the job must run on the thread that finalizes the pool. It is called once, when the job
 * is added.
 * GetGroup and CanRunOnWorker are called with the pool's lock held and must return immediately.
 */
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

/* Receives finished jobs.
 *
 * OnJobDone receives the job's name and the job, which is null if the added object does not implement IUTThreadedJob.
 * Both are valid during the call. Returning 0 means that the job is done with, and the pool releases it. Otherwise the
 * pool keeps the job until it is finalized, passes it to the finalizing host, and ignores the result of that call. A
 * job's own host is called on the worker with the pool's lock held: it may call the pool's functions but must not wait
 * for another job.
 * WaitForJobs is called on the finalizing host when no job has finished. `event` is the handle of an event that is set
 * when a job finishes. If the host returns 1, the library waits for the event, at most one second. Otherwise the host
 * has waited itself, for the event or for anything else it has to serve.
 */
struct IUTThreadedJobHost
{
    virtual QXHRESULT QXUT_COMCALL QueryInterface(const struct _GUID& iid, void** object) = 0;
    virtual QXULONG QXUT_COMCALL AddRef() = 0;
    virtual QXULONG QXUT_COMCALL Release() = 0;

    virtual int32_t QXUT_COMCALL OnJobDone(const QXWCHAR* name, IUTThreadedJob* job) = 0;
    virtual int32_t QXUT_COMCALL WaitForJobs(void* event) = 0;
};

#else

/* The same interfaces in C. Their functions are documented above. */
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

/* The result of the functions below if an argument that must not be null is null. */
#define QXUT_E_INVALIDARG ((int32_t)0x80070057)

/* Opens a pool with at most `maximumWorkers` workers. 0 means the number of processors available to the process
   minus 1, but at least 1. While ten or more pools are open, a new pool gets at most 2 workers. Workers are started
   when jobs need them and end with the pool. `name` names the threads in debuggers and in the debug output. Returns
   null only if memory runs out. */
QXUT_API HUTTHREADPOOL UtilThreadPoolOpen(uint32_t maximumWorkers, const QXWCHAR* name);

/* Adds a job. `job` is any interface of an object that implements IUTThreadedJob. An object that does not implement it
   passes through the pool without being run. The pool holds a reference to `job` and to `host`. `host` may be null;
   otherwise it is notified when the job is done. Once a pool has been aborted, even for one group only, new jobs are
   dropped: they are released without being run, and no host is notified. Returns 0, or QXUT_E_INVALIDARG if `pool` is
   null. */
QXUT_API int32_t UtilThreadPoolAdd(
    HUTTHREADPOOL pool, const QXWCHAR* name, struct IUnknown* job, struct IUTThreadedJobHost* host);

/* Drops the jobs of a group (0 for all jobs) that have not started, and finished jobs that wait to be finalized. No
   host is notified. Running jobs run to their end. Only the first abort of a pool has an effect. Returns 0, or
   QXUT_E_INVALIDARG if `pool` is null. */
QXUT_API int32_t UtilThreadPoolAbort(HUTTHREADPOOL pool, int32_t group);

/* Runs the jobs that must run on this thread, notifies `host` of each finished job that has no host of its own or that
   its own host left to the pool, and returns when no job is left. Don't call this from a job that runs on a worker: it
   would wait for that job forever. A job that runs on the calling thread may call it. Returns 0, or QXUT_E_INVALIDARG
   if `pool` or `host` is null. */
QXUT_API int32_t UtilThreadPoolFinalize(HUTTHREADPOOL pool, struct IUTThreadedJobHost* host);

/* Aborts all jobs, waits for the running ones, and frees the pool. If the pool was aborted for a single group before,
   its other jobs are finished first. Null is ignored. No other thread may use the pool any more, and none of its jobs
   or hosts may call this function. */
QXUT_API void UtilThreadPoolClose(HUTTHREADPOOL pool);

QXUT_EXTERN_C_END

#endif
