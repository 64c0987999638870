// The library, loaded with a log file of its own, and the lines that it writes there.
#pragma once

#include <qxut23/leaks.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace qxtest
{

struct HeapsLibrary
{
    // Loads the library at the first call.
    static const HeapsLibrary& Get();

    // Returns the texts of the report lines written since the last call, each with one blank for each level. Pointers
    // are replaced by "P". Successive lines of a call chain are replaced by one line " [called by *]".
    static std::vector<std::string> NewLines();

    decltype(&::UtilJobOpen) jobOpen;
    decltype(&::UtilJobClose) jobClose;
    decltype(&::UtilHeapCreate) create;
    decltype(&::UtilHeapDelete) remove;
    decltype(&::UtilHeapSize) size;
    decltype(&::UtilHeapSizeObjects) sizeObjects;
    decltype(&::UtilHeapObjectAlloc) alloc;
    decltype(&::UtilHeapObjectAllocExt) allocExt;
    decltype(&::UtilHeapObjectFree) free;
    decltype(&::UtilHeapObjectSize) objectSize;
    decltype(&::UtilHeapValidate) validate;
    decltype(&::UtilHeapShrink) shrink;
    decltype(&::QxHeapLeaks) leaks;
};

// A job with one heap.
struct JobAndHeap
{
    explicit JobAndHeap(std::uint32_t heapFlags, std::uint32_t jobFlags = 0)
        : job(HeapsLibrary::Get().jobOpen(L"job", jobFlags)),
          heap(HeapsLibrary::Get().create(job, L"heap", heapFlags))
    {
    }
    JobAndHeap(const JobAndHeap&) = delete;
    JobAndHeap& operator=(const JobAndHeap&) = delete;
    ~JobAndHeap()
    {
        HeapsLibrary::Get().jobClose(job);
        HeapsLibrary::NewLines();
    }

    const HUTHEAPJOB job;
    const HUTHEAP heap;
};

inline std::uint32_t& WordAt(void* object, std::ptrdiff_t offset)
{
    return *reinterpret_cast<std::uint32_t*>(static_cast<char*>(object) + offset);
}

} // namespace qxtest
