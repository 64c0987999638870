// Conversions between the handles of the profile functions and the objects they refer to.
#pragma once

#include <qxut23/profile.h>

#include "exports/guard.h"
#include "prof/job.h"

#include <memory>

namespace qx
{

constexpr HPROFJOB kInvalidJob = nullptr;

inline clsProfJob* JobOf(HPROFJOB job)
{
    return reinterpret_cast<clsProfJob*>(job);
}

inline HPROFJOB HandleOf(clsProfJob* job)
{
    return reinterpret_cast<HPROFJOB>(job);
}

inline clsItemList* ListOf(HPROFLIST list)
{
    return reinterpret_cast<clsItemList*>(list);
}

// Returns the list of a handle. A null list refers to the root.
inline clsItemList& ListOf(HPROFJOB job, HPROFLIST list)
{
    return list != nullptr ? *ListOf(list) : JobOf(job)->Root();
}

inline HPROFLIST HandleOf(clsItemList* list)
{
    return reinterpret_cast<HPROFLIST>(list);
}

struct ReleaseJob
{
    void operator()(clsProfJob* job) const { job->Release(); }
};

// Creates a job with the given constructor arguments and calls `open` on it.
template <class Open, class... Arguments>
HPROFJOB OpenJob(Open open, Arguments... arguments)
{
    return Guarded(HPROFJOB{},
        [&]
        {
            std::unique_ptr<clsProfJob, ReleaseJob> job(new clsProfJob(arguments...));
            open(*job);
            return HandleOf(job.release());
        });
}

} // namespace qx
