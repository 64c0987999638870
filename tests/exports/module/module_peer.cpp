// module_peer: loads the library, uses it, unloads it, and loads it again. Exit code: 0 on success, otherwise the
// number of the failed check. With an argument: fails an assertion.
#include <qxut23/heaps.h>
#include <qxut23/module.h>

#include "support/library_function.h"

#include <windows.h>

#include <heapapi.h>
#include <memoryapi.h>

#include <cstddef>
#include <cstdint>

namespace
{

#define FIND(name) QXTEST_FUNCTION(library, name)

std::size_t BlocksOfProcessHeap()
{
    std::size_t count = 0;
    PROCESS_HEAP_ENTRY entry{};
    while (HeapWalk(GetProcessHeap(), &entry))
        count += (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0;
    return count;
}

constexpr std::size_t kHeapsLeft = 20;
const void* objectsLeft[kHeapsLeft];

// Calls itself, so that each heap has a different call chain.
[[gnu::noinline]] void LeaveHeaps(HMODULE library, HUTHEAPJOB job, std::size_t count)
{
    objectsLeft[count - 1] = FIND(UtilHeapObjectAlloc)(FIND(UtilHeapCreate)(job, L"heap", 0), 3'000'000, 0);
    if (count > 1)
        LeaveHeaps(library, job, count - 1);
    asm volatile(""); // keeps the call above from becoming a jump
}

// Returns true if the memory of the objects was returned to the system.
bool AreObjectsGone()
{
    for (const void* const object : objectsLeft)
    {
        MEMORY_BASIC_INFORMATION memory{};
        if (VirtualQuery(object, &memory, sizeof memory) != 0 && memory.State == MEM_COMMIT)
            return false;
    }
    return true;
}

int UseOnce()
{
    const HMODULE library = LoadLibraryW(L"qxUT23.dll");
    if (library == nullptr)
        return 1;
    const std::int32_t environment = FIND(UtilGetOSEnvironmentType)();
    const bool areRight[] = {FIND(UtilGetVersion)(0) == 0x170002, FIND(UtilLanguageGet)() >= 0,
        FIND(UtilLanguageSet)(0) != 0 || FIND(UtilLanguageGet)() >= 0, environment >= 1 && environment <= 4,
        FIND(UtilGetUIInteractionAllowed)() <= 1};
    for (int check = 0; check < 5; ++check)
        if (!areRight[check])
            return 2 + check;
    LeaveHeaps(library, FIND(UtilJobOpen)(L"job", QXUT_HEAPJOB_DEBUG | QXUT_HEAPJOB_TRACE), kHeapsLeft);
    if (AreObjectsGone())
        return 10;
    if (!FreeLibrary(library))
        return 7;
    if (GetModuleHandleW(L"qxUT23.dll") != nullptr)
        return 8;
    return AreObjectsGone() ? 0 : 11;
}

int FailAssertion()
{
    const HMODULE library = LoadLibraryW(L"qxUT23.dll");
    FIND(UtilAssert)(L"a < b", L"file.cpp", 42);
    return 0; // a failed assertion doesn't return
}

} // namespace

int main(int count, char**)
{
    if (count > 1)
        return FailAssertion();
    const int first = UseOnce();
    if (first != 0)
        return first;
    const std::size_t before = BlocksOfProcessHeap();
    const int second = UseOnce();
    // The system may keep a few blocks of its own in the process heap.
    return second != 0 ? second : BlocksOfProcessHeap() < before + kHeapsLeft ? 0 : 12;
}
