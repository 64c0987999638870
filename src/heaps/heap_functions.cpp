#include "heaps/heap_functions.h"

#include "module/late_libraries.h"

namespace qx
{
namespace
{

template <class Function, class Late>
void Resolve(Function& function, Late& late)
{
    if (late.IsThere())
        function = reinterpret_cast<Function>(late.Address());
}

HeapFunctions Resolved()
{
    clsKernel32& kernel = Kernel32();
    HeapFunctions functions;
    Resolve(functions.lock, kernel.p_HeapLock);
    Resolve(functions.unlock, kernel.p_HeapUnlock);
    Resolve(functions.walk, kernel.p_HeapWalk);
    Resolve(functions.validate, kernel.p_HeapValidate);
    Resolve(functions.compact, kernel.p_HeapCompact);
    Resolve(functions.freeMarked, kernel.p_QxHeapFreeMarked);
    Resolve(functions.sizeOfAny, kernel.p_QxHeapSizeOfAny);
    const char*(WINAPI * singleThreadedFlag)() = nullptr;
    Resolve(singleThreadedFlag, kernel.p_QxSingleThreadedFlag);
    if (singleThreadedFlag != nullptr)
        functions.isSingleThreaded = singleThreadedFlag();
    return functions;
}

} // namespace

constinit std::atomic<const HeapFunctions*> heapFunctions = nullptr;

const HeapFunctions& ResolveHeapFunctions()
{
    static const HeapFunctions functions = Resolved();
    heapFunctions.store(&functions, std::memory_order_release);
    return functions;
}

void ReplaceHeapFunctions(const HeapFunctions* functions)
{
    heapFunctions.store(functions, std::memory_order_release);
}

} // namespace qx
