// Finds three kinds of leak, and an overrun, an underrun and a double free. The details are in the library's log.
// docs/diagnostics.md shows the program, its output and the log.
#include "example_text.h"

#include <qxut23/handles.h>
#include <qxut23/leaks.h>

#include <cstdint>
#include <cstdio>

namespace
{

constexpr QXWCHAR kModule[] = {'r', 'e', 'p', 'o', 'r', 't', 0};
constexpr QXWCHAR kHeap[] = {'p', 'a', 'g', 'e', 's', 0};
constexpr QXWCHAR kFonts[] = {'f', 'o', 'n', 't', 's', 0};

char* Allocate(HUTHEAP heap, std::uint32_t size)
{
    return static_cast<char*>(UtilHeapObjectAlloc(heap, size, QXUT_OBJECT_ZERO));
}

// Storing the result keeps a function on the stack until the allocation is done. Otherwise optimised code jumps to its
// last call, and the chain begins with the function's caller.
void* volatile latest = nullptr;

// If the compiler knew this number, it could replace the loop by three calls, whose call chains would differ.
const volatile std::uint32_t pageCount = 3;

// A cache that only grows.
[[gnu::noinline]] void LoadPage(HUTHEAP heap, std::uint32_t number)
{
    latest = UtilHeapObjectAlloc(heap, 100 + number, 0);
}

// Forgets its buffer on the way out.
[[gnu::noinline]] bool ParsePage(HUTHEAP heap, bool isDamaged)
{
    void* const buffer = UtilHeapObjectAlloc(heap, 64, 0);
    if (isDamaged)
        return false;
    UtilHeapObjectFree(heap, buffer);
    return true;
}

[[gnu::noinline]] void LoadFont(HUTHEAP heap)
{
    latest = UtilHeapObjectAlloc(heap, 32, 0);
}

// The first line of a group names the caller of the library.
void PrintGroup(void*, const QxHeapLeak* leak)
{
    std::printf("%d objects, %d bytes: %s\n", static_cast<int>(leak->objectCount), static_cast<int>(leak->byteCount),
        leak->lineCount > 0 ? ShortPlace(Narrow(leak->lines[0])).c_str() : "?");
}

[[gnu::noinline]] void Leaks()
{
    const HUTHEAPJOB job = UtilJobOpen(kModule, QXUT_HEAPJOB_DEBUG);
    const HUTHEAP pages = UtilHeapCreate(job, kHeap, 0);
    const HUTHEAP fonts = UtilHeapCreate(job, kFonts, 0); // nobody deletes it

    for (std::uint32_t number = 0; number < pageCount; ++number)
        LoadPage(pages, number);
    ParsePage(pages, false);
    ParsePage(pages, true);
    LoadFont(fonts);
    QxHeapLeaks(job, nullptr, 0, PrintGroup, nullptr); // all groups of all heaps, by bytes

    std::printf("delete pages: %d\n", UtilHeapDelete(pages)); // with four objects
    std::printf("close: %d\n", UtilJobClose(job));            // with a heap
}

[[gnu::noinline]] void Damage()
{
    const HUTHEAPJOB job = UtilJobOpen(kModule, QXUT_HEAPJOB_DEBUG);
    const HUTHEAP heap = UtilHeapCreate(job, kHeap, 0);

    char* const overrun = Allocate(heap, 10);
    const char behind = overrun[10];
    overrun[10] = 'x';
    std::printf("overrun: free %d\n", UtilHeapObjectFree(heap, overrun));
    overrun[10] = behind;
    std::printf("after repair: free %d\n", UtilHeapObjectFree(heap, overrun));

    char* const underrun = Allocate(heap, 10);
    underrun[-1] = 'x';
    std::printf("underrun: free %d\n", UtilHeapObjectFree(heap, underrun));

    char* const twice = Allocate(heap, 10);
    std::printf("double free: %d", UtilHeapObjectFree(heap, twice));
    std::printf(", then %d\n", UtilHeapObjectFree(heap, twice));

    std::printf("close: %d\n", UtilJobClose(job)); // something was left
}

[[gnu::noinline]] void Handles()
{
    constexpr std::int32_t kPen = 1;
    const auto pen = [](std::uintptr_t value)
    {
        return reinterpret_cast<const void*>(value);
    };
    UtilHandleListMgr(kPen, QXUT_HANDLES_ADD, pen(0x1A001));
    UtilHandleListMgr(kPen, QXUT_HANDLES_SNAPSHOT, nullptr);
    UtilHandleListMgr(kPen, QXUT_HANDLES_ADD, pen(0x1A002));
    UtilHandleListMgr(kPen, QXUT_HANDLES_REMOVE, pen(0x1A001));
    UtilHandleListMgr(kPen, QXUT_HANDLES_SNAPSHOT, nullptr);
    UtilHandleListMgr(kPen, QXUT_HANDLES_COMPARE, nullptr);
    std::printf("open pens: %u\n", UtilHandleListMgr(kPen, QXUT_HANDLES_COUNT, nullptr));
}

} // namespace

int main()
{
    std::printf("== Leaks\n");
    Leaks();
    std::printf("== Damage\n");
    Damage();
    std::printf("== Handles\n");
    Handles();
}
