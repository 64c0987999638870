#include "heaps/heap_functions.h"

#include "module/late_libraries.h"

#include <atomic>

namespace qx
{
namespace
{

std::atomic<const HeapFunctions*> heapFunctionsOfTest = nullptr;

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
    return functions;
}

} // namespace

const HeapFunctions& LateHeapFunctions()
{
    static const HeapFunctions functions = Resolved();
    const HeapFunctions* const ofTest = heapFunctionsOfTest.load(std::memory_order_relaxed);
    return ofTest != nullptr ? *ofTest : functions;
}

void ReplaceHeapFunctions(const HeapFunctions* functions)
{
    heapFunctionsOfTest = functions;
}

} // namespace qx
