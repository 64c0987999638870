#include "faults/failing_allocations.h"

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdlib>

extern "C" void* __libc_malloc(std::size_t size);
extern "C" void* __libc_calloc(std::size_t count, std::size_t size);
extern "C" void* __libc_realloc(void* block, std::size_t size);
extern "C" void* __libc_memalign(std::size_t alignment, std::size_t size);
extern "C" void __libc_free(void* block);

namespace
{

constinit std::atomic<long> left = 0; // number of allocations until one fails, including that one; 0 if none fails
constinit std::atomic<bool> failsOn = false;
constinit std::atomic<bool> hasFailed = false;
constinit std::atomic<long> live = 0;

bool MustFail()
{
    if (left.load(std::memory_order_relaxed) <= 0)
        return false;
    const bool isLast = left.fetch_sub(1) == 1;
    if (!isLast)
        return false;
    if (failsOn)
        left = 1;
    hasFailed = true;
    errno = ENOMEM;
    return true;
}

void* Count(void* block)
{
    live += block != nullptr;
    return block;
}

} // namespace

extern "C" void* malloc(std::size_t size)
{
    return MustFail() ? nullptr : Count(__libc_malloc(size));
}

extern "C" void* calloc(std::size_t count, std::size_t size)
{
    return MustFail() ? nullptr : Count(__libc_calloc(count, size));
}

extern "C" void* realloc(void* block, std::size_t size)
{
    if (block == nullptr)
        return malloc(size);
    return MustFail() ? nullptr : __libc_realloc(block, size);
}

extern "C" void* memalign(std::size_t alignment, std::size_t size)
{
    return MustFail() ? nullptr : Count(__libc_memalign(alignment, size));
}

extern "C" void* aligned_alloc(std::size_t alignment, std::size_t size)
{
    return memalign(alignment, size);
}

extern "C" int posix_memalign(void** block, std::size_t alignment, std::size_t size)
{
    *block = memalign(alignment, size);
    return *block != nullptr ? 0 : ENOMEM;
}

extern "C" void free(void* block)
{
    live -= block != nullptr;
    __libc_free(block);
}

namespace faulttest
{

void FailAllocation(long number, bool also)
{
    failsOn = also;
    if (number != 0)
        hasFailed = false;
    left = number;
}

bool HasFailed()
{
    return hasFailed;
}

long LiveBlocks()
{
    return live;
}

} // namespace faulttest
