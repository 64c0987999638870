#include "core/ticks.h"

#include <gtest/gtest.h>

using namespace qx;

namespace
{

DWORD counter = 0;

DWORD WINAPI ReadCounter()
{
    return counter;
}

TEST(Ticks, AWrapOfTheCounterIsARound)
{
    WrappingTicks ticks(&ReadCounter);
    struct
    {
        DWORD counter;
        unsigned long long expected;
    } constexpr steps[] = {
        {5, 5},
        {0xFFFFFFFF, 0xFFFFFFFF},
        {0xFFFFFFFF, 0xFFFFFFFF},
        {0, 0x100000000},
        {0x90000000, 0x190000000},
        {0x8FFFFFFF, 0x28FFFFFFF},
    };
    for (const auto& step : steps)
    {
        counter = step.counter;
        EXPECT_EQ(ticks.Now(), step.expected);
    }
}

TEST(Ticks, GoOnWhereTheSourceIsDecided)
{
    const unsigned long long before = UtilGetTicks();
    DecideTickSource(nullptr);
    const unsigned long long counted = UtilGetTicks();
    EXPECT_EQ(counted >> 32, 0u);
    EXPECT_GE(counted, before);
    DecideTickSource(&GetTickCount64);
    EXPECT_GE(UtilGetTicks(), counted);
}

} // namespace
