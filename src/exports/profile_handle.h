// Conversions between the handles of the profile functions and the objects they refer to.
#pragma once

#include <qxut23/profile.h>

#include "prof/job.h"

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

// A null list refers to the root.
inline clsItemList& ListOf(HPROFJOB job, HPROFLIST list)
{
    return list != nullptr ? *ListOf(list) : JobOf(job)->Root();
}

inline HPROFLIST HandleOf(clsItemList* list)
{
    return reinterpret_cast<HPROFLIST>(list);
}

} // namespace qx
