#include "exports/breakpoints/watched.h"

#include <gtest/gtest.h>

#include <iostream>
#include <thread>
#include <tuple>

using namespace watched;

class Breakpoints : public ::testing::Test
{
protected:
    void SetUp() override
    {
        if (machine == Machine::Refuses)
            GTEST_SKIP() << "this machine grants no data breakpoints";
        if (machine == Machine::IsSilent)
            std::cout << "this machine's breakpoints never fire: their hits are not tested\n";
    }

    // Returns the number of hits to expect.
    unsigned Hits(unsigned count) const { return machine == Machine::Fires ? count : 0; }

    const Machine machine = MachineDoes();
    const Handler handler;
};

TEST_F(Breakpoints, TakeTheFirstFreeSlot)
{
    EXPECT_EQ(UseAll(), 0);
    volatile std::int64_t cells[5] = {};
    HDATABP taken[4];
    for (int slot = 0; slot < 4; ++slot)
        taken[slot] = Watch(&cells[slot], 8);
    const HDATABP fifth = Watch(&cells[4], 8);
    ASSERT_NE(fifth, nullptr);
    EXPECT_EQ(SlotOf(fifth), -1);
    UtilRemoveDataBP(fifth); // touches no register
    UtilRemoveDataBP(taken[1]);
    taken[1] = Watch(&cells[4], 8);
    EXPECT_EQ(SlotOf(taken[1]), 1);
    cells[1] = 1;
    EXPECT_EQ(TakeHits(), 0u);
    cells[4] = 1;
    EXPECT_EQ(TakeHits(), Hits(1));
    for (const HDATABP breakpoint : taken)
        UtilRemoveDataBP(breakpoint);
    UtilRemoveDataBP(nullptr);
    for (volatile std::int64_t& cell : cells)
        cell = 2;
    EXPECT_EQ(TakeHits(), 0u);
}

// Slots that other code has set are left unchanged.
TEST_F(Breakpoints, LeaveOtherSlotsAlone)
{
    volatile std::int64_t cells[2] = {};
    CONTEXT context{};
    context.ContextFlags = CONTEXT_DEBUG_REGISTERS;
    ASSERT_TRUE(GetThreadContext(GetCurrentThread(), &context));
    context.Dr0 = reinterpret_cast<std::uintptr_t>(&cells[0]);
    context.Dr7 = 0x90001; // writes of 8 bytes
    ASSERT_TRUE(SetThreadContext(GetCurrentThread(), &context));
    const HDATABP breakpoint = Watch(&cells[1], 8, false);
    EXPECT_EQ(SlotOf(breakpoint), 1);
    ASSERT_TRUE(GetThreadContext(GetCurrentThread(), &context));
    EXPECT_EQ(context.Dr7 & 0xFF00FF, 0xB90005u);
    EXPECT_EQ(context.Dr1, reinterpret_cast<std::uintptr_t>(&cells[1]));
    UtilRemoveDataBP(breakpoint);
    ASSERT_TRUE(GetThreadContext(GetCurrentThread(), &context));
    EXPECT_EQ(context.Dr7 & 0xF00FF, 0x90001u);
    cells[0] = 1;
    cells[1] = 1;
    EXPECT_EQ(TakeHits(), Hits(1));
    context.Dr7 = 0;
    ASSERT_TRUE(SetThreadContext(GetCurrentThread(), &context));
    cells[0] = 2;
    EXPECT_EQ(TakeHits(), 0u);
}

TEST_F(Breakpoints, WatchWhatTheyAreSetFor)
{
    alignas(16) volatile std::uint8_t bytes[16] = {};
    const std::tuple<unsigned, std::uint32_t, unsigned, unsigned> cases[] = {
        {0, 1, 0, 0},
        {2, 2, 2, 3},
        {4, 4, 4, 7},
        {8, 8, 8, 15},
#if !defined(_WIN32) // Wine passes unaligned addresses on to linux, which refuses them
        {5, 4, 4, 7},
        {3, 2, 2, 3},
        {15, 8, 8, 15}
#endif
    };
    for (const auto& [offset, size, first, last] : cases)
        for (const bool isWriteOnly : {true, false})
        {
            const HDATABP breakpoint = Watch(&bytes[offset], size, isWriteOnly);
            for (unsigned i = 0; i < sizeof bytes; ++i)
            {
                const bool isWatched = i >= first && i <= last;
                bytes[i] = 1;
                EXPECT_EQ(TakeHits(), Hits(isWatched)) << offset << "/" << size << " write to " << i;
                static_cast<void>(bytes[i]);
                EXPECT_EQ(TakeHits(), Hits(isWatched && !isWriteOnly)) << offset << "/" << size << " read of " << i;
            }
            UtilRemoveDataBP(breakpoint);
        }
    for (const std::uint32_t size : {0u, 3u, 5u, 16u, 0xFFFFFFFFu})
    {
        const HDATABP breakpoint = Watch(&bytes[0], size);
        EXPECT_EQ(SlotOf(breakpoint), -1) << size;
        UtilRemoveDataBP(breakpoint);
    }
}

TEST_F(Breakpoints, BelongToTheirThread)
{
    volatile int cell = 0;
    const HDATABP breakpoint = Watch(&cell, 4);
    unsigned others = 0;
    std::int32_t slot = -1;
    std::thread(
        [&]
        {
            cell = 1;
            others = TakeHits();
            slot = SlotOf(Abandon(Watch(&cell, 4))); // ends with the thread
            cell = 2;
            others += 10 * TakeHits();
        })
        .join();
    EXPECT_EQ(slot, 0);
    EXPECT_EQ(others, Hits(10));
    EXPECT_EQ(TakeHits(), 0u);
    cell = 3;
    EXPECT_EQ(TakeHits(), Hits(1));
    UtilRemoveDataBP(breakpoint);
}
