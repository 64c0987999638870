// The reference count of an object. It starts at 1, for the reference of the creator.
#pragma once

#include <minwindef.h>

#include <atomic>

namespace qxplatform
{

class ReferenceCount
{
public:
    ULONG Add() { return _count.fetch_add(1, std::memory_order_relaxed) + 1; }

    // Returns the remaining count. At 0 the object must be deleted; all changes made by other holders are visible then.
    ULONG Drop() { return _count.fetch_sub(1, std::memory_order_acq_rel) - 1; }

private:
    std::atomic<ULONG> _count = 1;
};

} // namespace qxplatform
