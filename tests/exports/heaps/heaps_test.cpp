// Tracked heaps: memory format, handles and result codes.
#include "exports/heaps/heaps_library.h"

#include "stacks/callers.h"

#include "support/run_in_threads.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <heapapi.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <fstream>
#include <thread>
#include <tuple>

using namespace qxtest;

namespace
{

const HeapsLibrary& heaps = HeapsLibrary::Get();

constexpr std::uint32_t kFirst = 0xC0FFEEEE, kSecond = 0xAFFEAFFE, kPlain = 0xFAAFFAAF, kEnd = 0xE5E55E5E;

bool IsFilled(const void* object, std::size_t size, int byte)
{
    const auto* const bytes = static_cast<const unsigned char*>(object);
    return std::all_of(bytes, bytes + size, [byte](unsigned char each) { return each == byte; });
}

HANDLE SystemHeapOf(const void* debugObject)
{
    HANDLE systemHeap = nullptr;
    std::memcpy(&systemHeap, static_cast<const char*>(debugObject) - 36, sizeof systemHeap);
    return systemHeap;
}

} // namespace

TEST(HeapsFormat, DebugObject)
{
    const JobAndHeap own(QXUT_HEAP_DEBUG);
    const std::uint32_t before = GetTickCount();
    char* const object = static_cast<char*>(heaps.allocExt(own.heap, 13, QXUT_OBJECT_ZERO, nullptr, 0x12345678));
    EXPECT_EQ(WordAt(object, -44), kFirst);
    EXPECT_EQ(HeapSize(SystemHeapOf(object), 0, object - 44), 13u + 48);
    EXPECT_LE(WordAt(object, -28) - before, GetTickCount() - before);
    EXPECT_EQ(WordAt(object, -12), 0x12345678u);
    EXPECT_EQ(WordAt(object, -8), 13u);
    EXPECT_EQ(WordAt(object, -4), kSecond);
    EXPECT_TRUE(IsFilled(object, 13, 0));
    std::uint32_t fence = 0;
    std::memcpy(&fence, object + 13, sizeof fence);
    EXPECT_EQ(fence, kEnd);

    // The chain begins with this program.
    qx::scCaller* chain = nullptr;
    std::memcpy(&chain, object - 20, sizeof chain);
    ASSERT_NE(chain, nullptr);
    HMODULE first = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
        static_cast<wchar_t*>(chain[0].address), &first);
    EXPECT_EQ(first, GetModuleHandleW(nullptr));
    EXPECT_NE(chain[1].address, nullptr);
    [[maybe_unused]] bool ended = false;
    for (int i = 0; i < 30; ++i)
    {
#if !defined(_WIN32) // Wine's captures continue beyond a thread's first frame
        EXPECT_TRUE(!ended || chain[i].address == nullptr) << i;
#endif
        ended = chain[i].address == nullptr;
        EXPECT_EQ(chain[i].reserved, nullptr);
        EXPECT_EQ(chain[i].reserved2, nullptr);
    }
    EXPECT_EQ(heaps.objectSize(own.heap, object), 13);
    EXPECT_EQ(heaps.free(own.heap, object), 0);
}

TEST(HeapsFormat, KindsOfObjects)
{
    constexpr std::uint32_t kOther = QXUT_OBJECT_PLAIN, kDebug = QXUT_OBJECT_DEBUG;
    const std::tuple<std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t> kinds[] = {{0, 0, 0, kPlain},
        {0, 0, kDebug | QXUT_OBJECT_NO_CHAIN, kSecond}, {QXUT_HEAP_DEBUG, 0, 0, kSecond},
        {QXUT_HEAP_DEBUG, 0, kOther, kPlain}, {QXUT_HEAP_DEBUG | QXUT_HEAP_NO_DEBUG, 0, 0, kPlain},
        {0, QXUT_HEAPJOB_DEBUG, 0, kSecond}, {QXUT_HEAP_NO_DEBUG, QXUT_HEAPJOB_DEBUG, 0, kPlain},
        {QXUT_HEAP_NO_SERIALIZE | QXUT_HEAP_RAISE_EXCEPTIONS, 0, 0, kPlain}};
    for (const auto& [heapFlags, jobFlags, objectFlags, magic] : kinds)
    {
        const JobAndHeap own(heapFlags, jobFlags);
        const std::string where = "heap " + std::to_string(heapFlags) + " object " + std::to_string(objectFlags);
        std::int32_t all = 0;
        for (const std::uint32_t size : {0u, 1u, 12u, 500u, 40'000u, 3'000'000u})
        {
            void* const object = heaps.alloc(own.heap, size, objectFlags | QXUT_OBJECT_FILL);
            ASSERT_NE(object, nullptr) << where;
            EXPECT_EQ(WordAt(object, -4), magic) << where;
            EXPECT_TRUE(IsFilled(object, size, 0xF5)) << where;
            EXPECT_EQ(heaps.objectSize(own.heap, object), static_cast<std::int32_t>(size)) << where;
            EXPECT_EQ(heaps.validate(own.heap, object), 0) << where;
            all += static_cast<std::int32_t>(size) + (magic == kPlain ? 4 : 48);
            EXPECT_EQ(heaps.sizeObjects(own.heap), all) << where;
        }
        const bool isDebugHeap = heaps.size(own.heap) != QXUT_HEAP_NOT_SUPPORTED;
        EXPECT_EQ(heaps.size(own.heap), isDebugHeap ? all : QXUT_HEAP_NOT_SUPPORTED);
        EXPECT_EQ(heaps.alloc(own.heap, 0x80000000u, objectFlags), nullptr);
        EXPECT_EQ(heaps.remove(own.heap), QXUT_HEAP_LEFT_OVER) << where;
    }
}

TEST(HeapsFormat, ObjectsWithoutAHeap)
{
    void* const object = heaps.alloc(nullptr, 100, QXUT_OBJECT_ZERO);
    EXPECT_EQ(WordAt(object, -8), 100u);
    EXPECT_EQ(WordAt(object, -4), 0u);
    EXPECT_TRUE(IsFilled(object, 100, 0));
    EXPECT_EQ(heaps.objectSize(nullptr, object), 100);
    EXPECT_EQ(heaps.free(nullptr, object), 0);
}

TEST(HeapsHandles, JobsByName)
{
    const auto job = heaps.jobOpen(L"name", 0);
    EXPECT_EQ(heaps.jobOpen(L"name", QXUT_HEAPJOB_DEBUG), job);
    const auto heap = heaps.create(job, nullptr, 0);
    EXPECT_EQ(heaps.size(heap), QXUT_HEAP_NOT_SUPPORTED); // the second flags had no effect
    EXPECT_EQ(heaps.jobClose(job), 0);
    EXPECT_EQ(heaps.remove(heap), 0);
    EXPECT_EQ(heaps.jobClose(job), 0);
    EXPECT_EQ(heaps.jobClose(job), QXUT_HEAP_FAILED);
    EXPECT_EQ(heaps.create(job, L"late", 0), nullptr);

    constexpr wchar_t kLong[] = L"0123456789012345678901234567890123"; // 34 characters
    const auto first = heaps.jobOpen(kLong, 0), second = heaps.jobOpen(kLong, 0);
    EXPECT_NE(first, second);
    const wchar_t cut[] = L"01234567890123456789012345678901";
    EXPECT_EQ(heaps.jobOpen(cut, 0), first);
    EXPECT_EQ(heaps.jobClose(first), 0);
    EXPECT_EQ(heaps.jobClose(first), 0);
    EXPECT_EQ(heaps.jobClose(second), 0);
}

TEST(HeapsHandles, DeletedAndForeignOnes)
{
    const auto job = heaps.jobOpen(L"name", 0);
    const auto heap = heaps.create(job, L"heap", 0);
    EXPECT_EQ(heaps.create(job, L"heap", 0x80), nullptr);
    EXPECT_EQ(heaps.remove(heap), 0);
    EXPECT_EQ(heaps.remove(heap), QXUT_HEAP_FAILED);
    EXPECT_EQ(heaps.remove(reinterpret_cast<HUTHEAP>(16)), QXUT_HEAP_FAILED);
    EXPECT_EQ(heaps.jobClose(reinterpret_cast<HUTHEAPJOB>(16)), QXUT_HEAP_FAILED);
    heaps.create(job, L"left", 0);
    EXPECT_EQ(heaps.jobClose(job), QXUT_HEAP_LEFT_OVER);
    EXPECT_EQ(heaps.jobClose(nullptr), 0);
    for (const auto function : {heaps.remove, heaps.size, heaps.sizeObjects, heaps.shrink})
        EXPECT_EQ(function(nullptr), 0);
    EXPECT_EQ(heaps.validate(nullptr, nullptr), 0);
    EXPECT_EQ(heaps.free(nullptr, nullptr), QXUT_HEAP_BAD_OBJECT);
}

// Every pointer that isn't an object of the heap is refused, and its target isn't changed.
TEST(HeapsHandles, PointersThatAreNoObjects)
{
    const JobAndHeap own(QXUT_HEAP_DEBUG);
    const auto other = heaps.create(own.job, L"other", 0);
    const auto expectRefused = [&own](void* pointer, const char* what)
    {
        EXPECT_EQ(heaps.free(own.heap, pointer), QXUT_HEAP_BAD_OBJECT) << what;
        EXPECT_EQ(heaps.objectSize(own.heap, pointer), QXUT_HEAP_BAD_OBJECT) << what;
        EXPECT_EQ(heaps.validate(own.heap, pointer), pointer != nullptr ? QXUT_HEAP_CORRUPTED : 0) << what;
    };
    for (const std::uint32_t flags : {QXUT_OBJECT_PLAIN, QXUT_OBJECT_DEBUG})
    {
        char* const object = static_cast<char*>(heaps.alloc(own.heap, 100, flags));
        for (const std::ptrdiff_t offset : {-3, 1, 4, 16, 96})
            expectRefused(object + offset, "inside of an object");
        char* const foreign = static_cast<char*>(heaps.alloc(other, 100, flags | QXUT_OBJECT_FILL));
        expectRefused(foreign, "of another heap");
        EXPECT_TRUE(IsFilled(foreign, 100, 0xF5));
        EXPECT_EQ(heaps.free(other, foreign), 0);
        EXPECT_EQ(heaps.free(own.heap, object), 0);
        expectRefused(object, "freed");
        void* const large = heaps.alloc(own.heap, 5'000'000, flags);
        EXPECT_EQ(heaps.free(own.heap, large), 0);
        expectRefused(large, "freed, and its memory given back");
    }
    alignas(16) char outside[200];
    std::memset(outside, 0x11, sizeof outside);
    WordAt(outside, 60) = kPlain;
    expectRefused(outside + 64, "not on a heap");
    EXPECT_TRUE(IsFilled(outside + 64, 136, 0x11));
    for (const std::uintptr_t address : {0u, 3u, 44u, 4096u, 0xFFFFFFF4u})
        expectRefused(reinterpret_cast<void*>(address), "inaccessible");
    EXPECT_EQ(heaps.sizeObjects(own.heap), 0);
}

// Changes each byte of the header and the fence. Whatever the effect, the object can be freed after the byte is
// restored.
TEST(HeapsDamage, EveryByteOfHeaderAndFence)
{
    const JobAndHeap own(QXUT_HEAP_DEBUG);
    void* const neighbour = heaps.alloc(own.heap, 20, QXUT_OBJECT_FILL);
    for (std::ptrdiff_t offset = -44; offset < 24; ++offset)
        for (const int change : {0x01, 0x80, 0xFF})
        {
            auto* const object = static_cast<unsigned char*>(heaps.alloc(own.heap, 20, 0));
            const bool isChecked = offset < -40 || (offset >= -8 && offset < 0) || offset >= 20;
            object[offset] = static_cast<unsigned char>(object[offset] ^ change);
            heaps.validate(own.heap, object);
            EXPECT_EQ(heaps.objectSize(own.heap, object), offset >= -4 && offset < 0 ? QXUT_HEAP_BAD_OBJECT : 20)
                << offset;
            EXPECT_EQ(heaps.free(own.heap, object), isChecked ? QXUT_HEAP_BAD_OBJECT : 0) << offset;
            if (!isChecked)
                continue;
            object[offset] = static_cast<unsigned char>(object[offset] ^ change);
            EXPECT_EQ(heaps.free(own.heap, object), 0) << offset;
        }
    EXPECT_TRUE(IsFilled(neighbour, 20, 0xF5));
    EXPECT_EQ(heaps.free(own.heap, neighbour), 0);
    EXPECT_EQ(heaps.sizeObjects(own.heap), 0);
    EXPECT_EQ(heaps.remove(own.heap), 0);
}

// Sanitizers add memory of their own.
#if !defined(_WIN32) && !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)

namespace
{

std::size_t MemoryInUse()
{
    std::size_t pages = 0, residentPages = 0;
    std::ifstream("/proc/self/statm") >> pages >> residentPages;
    return residentPages * 4096;
}

} // namespace

// The C library needs 80 bytes for such an object.
TEST(HeapsMemory, TwoHundredThousandObjectsOf64Bytes)
{
    constexpr std::size_t kCount = 200'000;
    for (const std::uint32_t flags : {std::uint32_t{0}, std::uint32_t{QXUT_HEAP_DEBUG}})
    {
        const JobAndHeap own(flags | QXUT_HEAP_NO_WARNING);
        const std::size_t before = MemoryInUse();
        for (std::size_t i = 0; i < kCount; ++i)
            std::memset(heaps.alloc(own.heap, 64, 0), 1, 64);
        const std::size_t used = MemoryInUse() - before;
        EXPECT_LE(used, kCount * (flags == 0 ? 80 * 12 / 10 : 64 + 48 + 32)) << flags;
        EXPECT_GE(used, kCount * (flags == 0 ? 64 : 64 + 48)) << flags;
        EXPECT_EQ(heaps.remove(own.heap), QXUT_HEAP_LEFT_OVER);
        EXPECT_LT(MemoryInUse(), before + kCount * 8) << flags; // returned to the system
    }
}

#endif

TEST(HeapsThreads, EightThreadsOnTwoHeaps)
{
    const JobAndHeap own(QXUT_HEAP_DEBUG);
    const auto plain = heaps.create(own.job, L"plain", 0);
    std::atomic<int> failures = 0;
    RunInThreads(8,
        [&](unsigned number)
        {
            const auto heap = number % 2 != 0 ? own.heap : plain;
            std::vector<void*> objects(50, nullptr);
            for (unsigned step = 0; step < 2'000; ++step)
            {
                void*& object = objects[(step * 7 + number) % objects.size()];
                if (object != nullptr)
                    failures += WordAt(object, 0) != number || heaps.free(heap, object) != 0;
                object = heaps.alloc(heap, 4 + step % 600, 0);
                WordAt(object, 0) = number;
                if (step % 500 == number)
                    failures += heaps.validate(heap, object) != 0 || heaps.sizeObjects(heap) <= 0;
            }
            for (void* const object : objects)
                failures += heaps.free(heap, object) != 0;
        });
    EXPECT_EQ(failures, 0);
    EXPECT_EQ(heaps.remove(plain), 0);
    EXPECT_EQ(heaps.remove(own.heap), 0);
}

// The header of a debug object contains the handle of the system heap, so a host may allocate from that heap directly.
TEST(HeapsThreads, HostUsesTheSystemHeap)
{
    const JobAndHeap own(QXUT_HEAP_DEBUG);
    void* const first = heaps.alloc(own.heap, 16, 0);
    std::atomic<bool> isDone = false;
    std::atomic<int> failures = 0;
    std::thread host(
        [&, systemHeap = SystemHeapOf(first)]
        {
            for (std::size_t size = 1; !isDone; size = size % 3'000 + 1)
            {
                void* const block = HeapAlloc(systemHeap, 0, size);
                failures +=
                    block == nullptr || HeapSize(systemHeap, 0, block) != size || !HeapFree(systemHeap, 0, block);
            }
        });
    for (std::uint32_t step = 0; step < 3'000; ++step)
    {
        void* const object = heaps.alloc(own.heap, 1 + step % 2'000, step % 2 != 0 ? QXUT_OBJECT_PLAIN : 0);
        failures += heaps.objectSize(own.heap, object) != static_cast<std::int32_t>(1 + step % 2'000);
        failures += heaps.validate(own.heap, object) != 0 || heaps.free(own.heap, object) != 0;
    }
    isDone = true;
    host.join();
    EXPECT_EQ(failures, 0);
    EXPECT_EQ(heaps.free(own.heap, first), 0);
}
