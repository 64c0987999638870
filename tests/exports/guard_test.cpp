#include "exports/guard.h"

#include "core/errors/exception.h"
#include "core/errors/failure_text.h"
#include "support/debug_lines.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <tuple>

using namespace qx;
using qxtest::DebugLines;

TEST(GuardTest, NoExceptionComesThrough)
{
    const std::tuple<void (*)(), DWORD, const wchar_t*, const wchar_t*> cases[] = {
        {[] { throw std::bad_alloc(); }, ERROR_NOT_ENOUGH_MEMORY, L"ERR: out of memory in an exported function",
            L"out of memory"},
        {[] { throw std::runtime_error("50 %s"); }, ERROR_INTERNAL_ERROR,
            L"ERR: exception in an exported function: 50 %s", L"50 %s"},
        {[] { throw new clsException(L"line %1!d!", 4); }, ERROR_INTERNAL_ERROR, L"EXCEPTION(line 4)", L"line 4"},
        {[] { throw 7; }, ERROR_INTERNAL_ERROR, L"ERR: exception in an exported function", L"unknown exception"}};
    for (const auto& [work, error, line, text] : cases)
    {
        DebugLines lines;
        SetLastError(0);
        EXPECT_EQ(Guarded(-9, [&work = work] { return work(), 1; }), -9);
        EXPECT_EQ(GetLastError(), error);
        EXPECT_STREQ(lines.Last().Text(), line);
        EXPECT_STREQ(FailureText().Text(), text);
        Guarded(work);
        EXPECT_EQ(lines.Count(), 2u);
    }
    EXPECT_EQ(Guarded(-9, [] { return 5; }), 5);
}
