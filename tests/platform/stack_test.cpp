// Captures of return addresses, contexts of threads, regions of memory, and the modules of the process.
#include "stack_support.h"
#include "stacks/context_registers.h"

#include <psapi.h>

#include <algorithm>
#include <cstdint>
#include <memory>

using namespace qxtest;

namespace
{

TEST(Captures, HonourSkipAndCount)
{
    void* all[8] = {};
    void* part[8] = {};
    DWORD hash = 0;
    const WORD count = RtlCaptureStackBackTrace(0, 4, all, &hash);
    EXPECT_EQ(RtlCaptureStackBackTrace(2, 2, part, nullptr), 2);
    EXPECT_EQ(count, 4);
    EXPECT_EQ(part[0], all[2]);
    EXPECT_EQ(part[1], all[3]);
    EXPECT_EQ(part[2], nullptr);
    EXPECT_NE(hash, 0u);
    EXPECT_EQ(RtlCaptureStackBackTrace(5000, 8, part, nullptr), 0);
    EXPECT_EQ(RtlCaptureStackBackTrace(0, 0, part, nullptr), 0);
}

TEST(Captures, PassThroughALibraryWithoutSymbolsAndTheOneThatReplacesIt)
{
    std::vector<std::uintptr_t> offsets[2];
    HMODULE place[2] = {};
    // Each library is loaded twice, because its unwind rules are cached the second time.
    for (int round = 0; round < 4; ++round)
    {
        const int which = round % 2;
        const ProbeLibrary library(which == 0 ? "small_stack_probe" : "large_stack_probe");
        ASSERT_NE(library.Function(), nullptr);
        for (int run = 0; run < 2; ++run)
        {
            static Addresses captured;
            ProbeFrames frames;
            frames.callback = [](ProbeFrames&)
            {
                captured = CapturedAddresses();
            };
            library.Function()(frames);
            offsets[which].clear();
            // Frames of foreign functions may be in between.
            auto next = captured.begin();
            for (unsigned index = frames.count; index > 0; --index)
            {
                next = std::find(next, captured.end(), frames.address[index - 1]);
                ASSERT_NE(next, captured.end()) << "round " << round << ", run " << run;
                offsets[which].push_back(
                    reinterpret_cast<std::uintptr_t>(*next) - reinterpret_cast<std::uintptr_t>(library.module));
            }
        }
        place[which] = library.module;
    }
    // The case that matters: the same addresses with different unwind rules.
    ASSERT_EQ(offsets[0].size(), 4u);
    EXPECT_EQ(offsets[0][0], offsets[1][0]);
    if (place[0] != place[1])
        GTEST_SKIP() << "the libraries were loaded at different places";
}

TEST(Contexts, OfThisFunctionAndOfASuspendedThread)
{
    CONTEXT own;
    RtlCaptureContext(&own);
    int local = 0;
    const auto isNear = [](const CONTEXT& context, const void* place)
    {
        const auto address = reinterpret_cast<std::uintptr_t>(place);
        const auto stackPointer = qx::StackPointerOf(context);
        return stackPointer < address + 4096 && address < stackPointer + 65536;
    };
    EXPECT_TRUE(isNear(own, &local));

    for (const bool isWaiting : {true, false})
    {
        if (!kCanStopComputing) // nor read the registers of a running thread
            continue;
        std::atomic<const void*> place = nullptr;
        std::atomic<bool> mayEnd = false;
        Event end;
        Thread thread(
            [&]
            {
                const int here = 0;
                place = &here;
                if (isWaiting)
                    WaitForSingleObject(end, INFINITE);
                while (!mayEnd)
                {
                }
                return 0u;
            });
        while (place == nullptr)
            Sleep(1);
        Sleep(20);
        EXPECT_EQ(SuspendThread(thread), 0u);
        CONTEXT context{};
        context.ContextFlags = CONTEXT_FULL;
        EXPECT_TRUE(GetThreadContext(thread, &context)) << isWaiting;
        EXPECT_TRUE(isNear(context, place)) << isWaiting;
        EXPECT_EQ(ResumeThread(thread), 1u);
        mayEnd = true;
        SetEvent(end);
    }
}

MEMORY_BASIC_INFORMATION RegionOf(const void* address)
{
    MEMORY_BASIC_INFORMATION region{};
    EXPECT_EQ(VirtualQuery(address, &region, sizeof region), sizeof region);
    return region;
}

bool Contains(const MEMORY_BASIC_INFORMATION& region, const void* address)
{
    return reinterpret_cast<std::uintptr_t>(address) - reinterpret_cast<std::uintptr_t>(region.BaseAddress) <
           region.RegionSize;
}

TEST(Regions, OfImagesOfMemoryAndOfNothing)
{
    static int data = 1;
    const auto* const code = reinterpret_cast<const void*>(&RegionOf);
    for (const void* const address : {code, static_cast<const void*>(&data)})
    {
        const MEMORY_BASIC_INFORMATION region = RegionOf(address);
        EXPECT_EQ(region.AllocationBase, GetModuleHandleW(nullptr));
        EXPECT_EQ(region.State, DWORD{MEM_COMMIT});
        EXPECT_EQ(region.Type, DWORD{MEM_IMAGE});
        EXPECT_TRUE(Contains(region, address));
        EXPECT_LE(region.BaseAddress, address);
    }
    EXPECT_EQ(RegionOf(code).Protect, DWORD{PAGE_EXECUTE_READ});
    EXPECT_NE(RegionOf(&data).Protect & (PAGE_READWRITE | PAGE_WRITECOPY), 0u);

    const auto memory = std::make_unique<char[]>(1 << 20);
    memory[0] = 1;
    EXPECT_EQ(RegionOf(memory.get()).Type, DWORD{MEM_PRIVATE});
    EXPECT_EQ(RegionOf(memory.get()).Protect, DWORD{PAGE_READWRITE});
    EXPECT_EQ(RegionOf(nullptr).State, DWORD{MEM_FREE});
    EXPECT_EQ(RegionOf(nullptr).AllocationBase, nullptr);
    MEMORY_BASIC_INFORMATION region;
    EXPECT_EQ(VirtualQuery(reinterpret_cast<void*>(~std::uintptr_t{0xFFFF}), &region, sizeof region), 0u);
    EXPECT_ERROR(ERROR_BAD_LENGTH, VirtualQuery(code, &region, 8) != 0);

    // The regions cover the address space without a gap or an overlap.
    std::uintptr_t next = 0;
    bool hasCode = false;
    while (VirtualQuery(reinterpret_cast<void*>(next), &region, sizeof region) != 0)
    {
        ASSERT_EQ(reinterpret_cast<std::uintptr_t>(region.BaseAddress), next);
        ASSERT_GT(region.RegionSize, 0u);
        hasCode |= Contains(region, code) && region.State == MEM_COMMIT;
        next += region.RegionSize;
    }
    EXPECT_TRUE(hasCode);
}

TEST(Modules, OfTheProcess)
{
    const HANDLE process = GetCurrentProcess();
    HMODULE modules[500];
    DWORD size = 0;
    ASSERT_TRUE(EnumProcessModules(process, modules, sizeof modules, &size));
    const std::size_t count = size / sizeof modules[0];
    ASSERT_GT(count, 2u);
    EXPECT_EQ(modules[0], GetModuleHandleW(nullptr));
    MODULEINFO info{};
    EXPECT_TRUE(GetModuleInformation(process, modules[0], &info, sizeof info));
    EXPECT_EQ(info.lpBaseOfDll, modules[0]);
    const auto code = reinterpret_cast<std::uintptr_t>(&RegionOf);
    EXPECT_LT(code - reinterpret_cast<std::uintptr_t>(info.lpBaseOfDll), info.SizeOfImage);
    EXPECT_EQ(info.SizeOfImage % 4096, 0u);
    for (std::size_t index = 1; index < count; ++index)
    {
        EXPECT_TRUE(GetModuleInformation(process, modules[index], &info, sizeof info));
        EXPECT_EQ(RegionOf(info.lpBaseOfDll).AllocationBase, info.lpBaseOfDll) << index;
        EXPECT_EQ(
            RegionOf(static_cast<char*>(info.lpBaseOfDll) + info.SizeOfImage - 1).AllocationBase, info.lpBaseOfDll)
            << index;
    }

    wchar_t path[MAX_PATH] = {};
    wchar_t again[MAX_PATH] = {};
    wchar_t name[MAX_PATH] = {};
    char narrow[MAX_PATH] = {};
    const DWORD length = GetModuleFileNameW(nullptr, path, MAX_PATH);
    EXPECT_EQ(GetModuleFileNameExW(process, modules[0], again, MAX_PATH), length);
    EXPECT_EQ(Text(again), Text(path));
    const DWORD nameLength = GetModuleBaseNameW(process, modules[0], name, MAX_PATH);
    EXPECT_EQ(Text(name), Text(path + length - nameLength));
    EXPECT_EQ(GetModuleFileNameA(nullptr, narrow, MAX_PATH), length);
    EXPECT_EQ(narrow, Text(path).Narrow());
    EXPECT_EQ(GetModuleFileNameA(nullptr, narrow, 5), 5u);
    EXPECT_TRUE(!kIsLayer || std::string(narrow).size() == 4) << "terminated, which Wine omits";
}

} // namespace
