#include "exports/guard.h"

#include "support/debug_lines.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <tuple>

using namespace qx;
using qxtest::DebugLines;

TEST(GuardTest, NoExceptionComesThrough)
{
    const std::tuple<void (*)(), DWORD, const wchar_t*> cases[] = {
        {[] { throw std::bad_alloc(); }, ERROR_NOT_ENOUGH_MEMORY, L"ERR: out of memory in an exported function"},
        {[] { throw std::runtime_error("reason"); }, ERROR_INTERNAL_ERROR,
            L"ERR: exception in an exported function: reason"},
        {[] { throw 7; }, ERROR_INTERNAL_ERROR, L"ERR: exception in an exported function"}};
    for (const auto& [work, error, line] : cases)
    {
        DebugLines lines;
        SetLastError(0);
        EXPECT_EQ(Guarded(-9, [&work = work] { return work(), 1; }), -9);
        EXPECT_EQ(GetLastError(), error);
        EXPECT_STREQ(lines.Last().Text(), line);
        Guarded(work);
        EXPECT_EQ(lines.Count(), 2u);
    }
    EXPECT_EQ(Guarded(-9, [] { return 5; }), 5);
}
