#include "exports/guard.h"

#include "support/debug_lines.h"

#include <gtest/gtest.h>

#include <stdexcept>

using namespace qx;
using qxtest::DebugLines;

namespace
{

TEST(GuardTest, NoExceptionComesThrough)
{
    struct Case
    {
        void (*work)();
        DWORD error;
        const wchar_t* line;
    };
    const Case cases[] = {
        {[] { throw std::bad_alloc(); }, ERROR_NOT_ENOUGH_MEMORY, L"ERR: out of memory in an exported function"},
        {[] { throw std::runtime_error("reason"); }, ERROR_INTERNAL_ERROR,
            L"ERR: exception in an exported function: reason"},
        {[] { throw 7; }, ERROR_INTERNAL_ERROR, L"ERR: exception in an exported function"},
    };
    for (const Case& c : cases)
    {
        DebugLines lines;
        SetLastError(0);
        EXPECT_EQ(Guarded(-9, [&] { return c.work(), 1; }), -9);
        EXPECT_EQ(GetLastError(), c.error);
        EXPECT_STREQ(lines.Last().Text(), c.line);
        Guarded(c.work);
        EXPECT_EQ(lines.Count(), 2u);
    }
    EXPECT_EQ(Guarded(-9, [] { return 5; }), 5);
}

} // namespace
