#include "threads/threaded_job.h"

#include <unknwn.h>

namespace qx
{
namespace
{

constexpr GUID kJobId = QXUT_IID_IUTTHREADEDJOB;

} // namespace

clsUTThreadedJob::clsUTThreadedJob(const wchar_t* jobName, IUnknown* object, IUTThreadedJobHost* itsHost)
    : name(jobName),
      host(itsHost)
{
    void* found = nullptr;
    if (object && SUCCEEDED(object->QueryInterface(kJobId, &found)))
        job.Adopt(static_cast<IUTThreadedJob*>(found));
}

} // namespace qx
