// The count of an object's references. Objects come to life with one, which belongs to who made them.
#pragma once

#include <minwindef.h>

#include <atomic>

namespace qxplatform
{

class ReferenceCount
{
public:
    ULONG Add() { return _count.fetch_add(1, std::memory_order_relaxed) + 1; }

    // At 0 the object is to be deleted; all that other holders did to it is visible then.
    ULONG Drop() { return _count.fetch_sub(1, std::memory_order_acq_rel) - 1; }

private:
    std::atomic<ULONG> _count = 1;
};

} // namespace qxplatform
