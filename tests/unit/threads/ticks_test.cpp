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
    for (const unsigned long long expected :
        {0xFFFFFFFFull, 0xFFFFFFFFull, 0x100000000ull, 0x190000000ull, 0x28FFFFFFFull})
    {
        counter = static_cast<DWORD>(expected);
        EXPECT_EQ(ticks.Now(), expected);
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
