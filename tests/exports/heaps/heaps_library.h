// Loads the library with a log file of its own and returns the lines that it writes there.
#pragma once

#include "support/library_function.h"

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

    // Returns the texts of the report lines written since the last call, each with one blank per nesting level.
    // Pointers are replaced by "P". Successive lines of a call chain are replaced by one line " [called by *]".
    static std::vector<std::string> NewLines();

    const HMODULE library;
    decltype(&::UtilJobOpen) jobOpen = QXTEST_FUNCTION(library, UtilJobOpen);
    decltype(&::UtilJobClose) jobClose = QXTEST_FUNCTION(library, UtilJobClose);
    decltype(&::UtilHeapCreate) create = QXTEST_FUNCTION(library, UtilHeapCreate);
    decltype(&::UtilHeapDelete) remove = QXTEST_FUNCTION(library, UtilHeapDelete);
    decltype(&::UtilHeapSize) size = QXTEST_FUNCTION(library, UtilHeapSize);
    decltype(&::UtilHeapSizeObjects) sizeObjects = QXTEST_FUNCTION(library, UtilHeapSizeObjects);
    decltype(&::UtilHeapObjectAlloc) alloc = QXTEST_FUNCTION(library, UtilHeapObjectAlloc);
    decltype(&::UtilHeapObjectAllocExt) allocExt = QXTEST_FUNCTION(library, UtilHeapObjectAllocExt);
    decltype(&::UtilHeapObjectFree) free = QXTEST_FUNCTION(library, UtilHeapObjectFree);
    decltype(&::UtilHeapObjectSize) objectSize = QXTEST_FUNCTION(library, UtilHeapObjectSize);
    decltype(&::UtilHeapValidate) validate = QXTEST_FUNCTION(library, UtilHeapValidate);
    decltype(&::UtilHeapShrink) shrink = QXTEST_FUNCTION(library, UtilHeapShrink);
    decltype(&::QxHeapLeaks) leaks = QXTEST_FUNCTION(library, QxHeapLeaks);
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
