// Tracked heaps: the lines of the debug output.
#include "exports/heaps/heaps_library.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <tuple>

using namespace qxtest;

namespace
{

using Lines = std::vector<std::string>;

const HeapsLibrary& reported = HeapsLibrary::Get();

constexpr char kChainHeading[] = "Memory object allocation stack trace:";

// Returns the lines of an object's dump: the heading at `depth`, then the contents and the call chain one level deeper.
Lines Dump(std::size_t depth, const Lines& bytes, int size, bool hasChain = true)
{
    char head[80];
    std::snprintf(head, sizeof head, "-Object at P, %d(=0x%08x) Bytes", size, static_cast<unsigned>(size));
    Lines lines = {std::string(depth, ' ') + head};
    for (const std::string& line : bytes)
        lines.push_back(std::string(depth + 1, ' ') + line);
    if (hasChain)
    {
        lines.push_back(std::string(depth + 1, ' ') + kChainHeading);
        lines.push_back(std::string(depth + 1, ' ') + " [called by *]");
    }
    return lines;
}

Lines operator+(Lines lines, const Lines& more)
{
    lines.insert(lines.end(), more.begin(), more.end());
    return lines;
}

const Lines kBytes = {"  61 62 63 64 65 66 67 68  abcdefgh", "  00 7f e9                 ...     "};
constexpr char kContents[] = "abcdefgh\0\x7f\xe9";
constexpr int kSize = 11;

void* NewObject(HUTHEAP heap, std::uint32_t flags = 0)
{
    void* const object = reported.alloc(heap, kSize, flags);
    std::memcpy(object, kContents, kSize);
    return object;
}

} // namespace

TEST(HeapsReport, RefusedObjects)
{
    const JobAndHeap own(QXUT_HEAP_DEBUG);
    const auto foreign = reported.create(own.job, L"foreign", QXUT_HEAP_DEBUG);
    const std::string error = "Error: clsHeapNode['job'/'heap']::";
    const std::tuple<const char*, HUTHEAP, std::uint32_t, std::function<void(void*)>, Lines> cases[] = {
        {"fence", own.heap, 0, [](void* object) { static_cast<char*>(object)[kSize] = 1; },
            Lines{"Error: Memory overrun, fence value has been changed"} + Dump(0, kBytes, kSize) +
                Lines{error + "FreeObjectD(P)", " Memory overrun, fence value has been changed (object not freed)"} +
                Dump(1, kBytes, kSize)},
        {"first magic", own.heap, 0, [](void* object) { WordAt(object, -44) = 0; },
            {error + "FreeObjectD(P)", " Not allocated with UTIL or memory underrun (object not freed)"}},
        {"second magic", own.heap, 0, [](void* object) { WordAt(object, -4) = 0xAFFEAF01; },
            {error + "FreeObject(P)", " bad pointer, or memory underrun (magic=0xaffeaf01)"}},
        {"foreign", foreign, QXUT_OBJECT_NO_CHAIN, [](void*) {},
            Lines{error + "FreeObjectD(P)", " error freeing object"} + Dump(1, kBytes, kSize, false)},
        {"foreign, plain", foreign, QXUT_OBJECT_PLAIN, [](void*) {},
            {error + "FreeObjectND(P)", " bad object size -1", " error freeing object"}}};
    for (const auto& [what, owner, flags, damage, lines] : cases)
    {
        void* const object = NewObject(owner, flags);
        damage(object);
        HeapsLibrary::NewLines();
        EXPECT_EQ(reported.free(own.heap, object), QXUT_HEAP_BAD_OBJECT) << what;
        EXPECT_EQ(HeapsLibrary::NewLines(), lines) << what;
    }
}

TEST(HeapsReport, FreedObjectsAreOverwritten)
{
    const JobAndHeap own(QXUT_HEAP_DEBUG);
    reported.alloc(own.heap, 1, 0); // so that the heap keeps its memory
    auto* const object = static_cast<unsigned char*>(NewObject(own.heap));
    EXPECT_EQ(reported.free(own.heap, object), 0);
#if !defined(_WIN32) // the system keeps its own links in free blocks
    EXPECT_EQ(WordAt(object, -4), 0xAFFEAFFE);
    EXPECT_EQ(object[0], 0xCC);
    EXPECT_EQ(object[kSize - 1], 0xCC);
#endif
}

TEST(HeapsReport, SizesAndSums)
{
    const JobAndHeap own(QXUT_HEAP_DEBUG), other(0);
    void* const empty = reported.alloc(own.heap, 0, 0);
    HeapsLibrary::NewLines();
    EXPECT_EQ(reported.objectSize(own.heap, empty), 0);
    EXPECT_EQ(reported.size(other.heap), QXUT_HEAP_NOT_SUPPORTED);
    WordAt(empty, -4) = 7;
    EXPECT_EQ(reported.objectSize(own.heap, empty), QXUT_HEAP_BAD_OBJECT);
    EXPECT_EQ(reported.alloc(other.heap, 0xFFFFFFF0u, 0), nullptr);
    EXPECT_EQ(HeapsLibrary::NewLines(),
        (Lines{"Warning: clsHeapNode['job'/'heap']::SizeObject(P):", " Object has a size of 0 (bad pointer?)\n",
            "UtilHeapSize will only work for DEBUG heaps, or in NT >= 3.51", " 0x00000000",
            "Error: clsHeapNode['job'/'heap']::SizeObject(P)", " bad pointer, or memory underrun (magic=0x00000007)\n",
            "Error: clsHeapNode['job'/'heap']::AllocObjectND(-16): Out of memory"}));
    EXPECT_EQ(reported.alloc(own.heap, 0x80000000u, 0), nullptr);
    const Lines lines = HeapsLibrary::NewLines();
    ASSERT_GE(lines.size(), 3u);
    EXPECT_EQ(lines[0], "Error: clsHeapNode['job'/'heap']::AllocObjectD(-2147483648)");
    EXPECT_EQ(lines[1], " " + std::to_string(lines.size() - 2) + " traces");
    EXPECT_EQ(lines[2], "   P");
}

TEST(HeapsReport, HeapsAndJobsThatAreLeft)
{
    const auto job = reported.jobOpen(L"job", 0);
    const auto heap = reported.create(job, nullptr, QXUT_HEAP_DEBUG);
    NewObject(heap, QXUT_OBJECT_NO_CHAIN);
    reported.alloc(heap, 100, QXUT_OBJECT_PLAIN);
    EXPECT_EQ(reported.free(heap, reported.alloc(heap, 1, 0)), 0);
    static_cast<char*>(NewObject(heap, QXUT_OBJECT_NO_CHAIN))[kSize] = 1; // overwrites the fence
    reported.create(job, L"silent", QXUT_HEAP_NO_WARNING);
    HeapsLibrary::NewLines();
    EXPECT_EQ(reported.validate(heap, nullptr), 0);
    EXPECT_EQ(HeapsLibrary::NewLines(),
        (Lines{"Error: Memory overrun, fence value has been changed"} + Dump(0, kBytes, kSize, false)));
    EXPECT_EQ(reported.validate(heap, &job), QXUT_HEAP_CORRUPTED);
    const Lines both = Dump(1, kBytes, kSize, false) + Dump(1, kBytes, kSize, false);
    const Lines report = Lines{"Heap['job'/'']: 3 objects", " Heap allocation stack trace:", "  [called by *]"} + both;
    EXPECT_EQ(HeapsLibrary::NewLines(), (Lines{" Error: Heap corrupted"} + report));

    EXPECT_EQ(reported.jobClose(job), QXUT_HEAP_LEFT_OVER);
    const auto deeper = [](Lines lines, std::size_t depth)
    {
        for (std::string& line : lines)
            line.insert(0, depth, ' ');
        return lines;
    };
    EXPECT_EQ(HeapsLibrary::NewLines(),
        (Lines{"Error: deleting module 'job', but the following heaps are left:"} + deeper(report, 1) +
            Lines{" Error: Memory overrun, fence value has been changed"} + deeper(Dump(0, kBytes, kSize, false), 1) +
            Lines{" Heap['job'/'']: max 3, total 4 allocations", " Warning: deleting heap, but objects are left:"} +
            deeper(report, 2) + Lines{" Heap['job'/'silent']: 0 objects"}));

    const auto quiet = reported.jobOpen(L"job", 0);
    const auto silent = reported.create(quiet, L"silent", QXUT_HEAP_NO_WARNING);
    reported.alloc(silent, 1, 0);
    EXPECT_EQ(reported.remove(silent), QXUT_HEAP_LEFT_OVER);
    EXPECT_EQ(reported.remove(silent), QXUT_HEAP_FAILED);
    EXPECT_EQ(reported.jobClose(quiet), 0);
    EXPECT_EQ(reported.jobClose(quiet), QXUT_HEAP_FAILED);
    EXPECT_EQ(HeapsLibrary::NewLines(), (Lines{"Heap['job'/'silent']: max 1, total 1 allocations",
                                            "Error: clsModuleNode['']::DeleteHeap(P): Invalid handle",
                                            "Error: clsModuleList::Delete(P): Invalid handle"}));
}

TEST(HeapsReport, TracedJob)
{
    HeapsLibrary::NewLines();
    const auto job = reported.jobOpen(L"traced", QXUT_HEAPJOB_TRACE);
    const auto heap = reported.create(job, nullptr, QXUT_HEAP_NO_SERIALIZE);
    EXPECT_EQ(reported.jobOpen(L"traced", 0), job);
    EXPECT_EQ(reported.jobClose(job), 0);
    reported.alloc(heap, 96, 0);
    reported.sizeObjects(heap);
    reported.size(heap);
    reported.validate(heap, nullptr);
#if !defined(_WIN32) // HeapCompact always fails under Wine
    EXPECT_EQ(reported.shrink(heap), 0);
#endif
    reported.remove(heap);
    reported.create(job, L"left", QXUT_HEAP_NO_DEBUG);
    reported.jobClose(job);
    EXPECT_EQ(HeapsLibrary::NewLines(), (Lines {
        "UtilJobOpen('traced',0x80000000)", " ->P", "UtilHeapCreate(P,'(NULL)',0x00000010)",
            "traced: UtilHeapCreate(..,'(NULL)',..) called with DEBUG bit", " ->P", "UtilJobOpen('traced',0x00000000)",
            " ->P", "UtilJobClose(P) ['traced']", " ->0", "UtilHeapSizeObjects(P) ['traced','']", " ->100",
            "UtilHeapSize(P) ['traced','']", " UtilHeapSize will only work for DEBUG heaps, or in NT >= 3.51",
            "  0x00000010", " ->-7", "UtilHeapValidate(P) ['traced','']", " ->0",
#if !defined(_WIN32) // HeapCompact always fails under Wine
            "UtilHeapShrink(P) ['traced','']", " ->0",
#endif
            "UtilHeapDelete(P) ['traced','']", " Heap['traced'/'']: max 1, total 1 allocations",
            " Warning: deleting heap, but objects are left:", "  Heap['traced'/'']: 1 objects", " ->-5",
            "UtilHeapCreate(P,'left',0x00000040)", " ->P", "UtilJobClose(P) ['traced']",
            " Error: deleting module 'traced', but the following heaps are left:", "  Heap['traced'/'left']: 0 objects",
            " Error: unknown result code '-5'", " ->-5"
    }));
}
