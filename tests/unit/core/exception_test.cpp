#include "core/exception.h"

#include "support/debug_lines.h"

#include <gtest/gtest.h>

using namespace qx;
using qxtest::DebugLines;

TEST(Exception, MessagesAreInsertedLoggedAndStacked)
{
    const DebugLines lines;
    clsException error(L"line %1!d!: %2 expected", 12, L"')'");
    error.Push(L"while reading %1", L"'x'");
    const clsException copy(error);

    ASSERT_EQ(copy.Errors().Count(), 2U);
    EXPECT_STREQ(copy.Errors().First()->Text(), L"while reading 'x'");
    EXPECT_STREQ(copy.Errors().Last()->Text(), L"line 12: ')' expected");
    const auto logged = lines.Entries();
    ASSERT_EQ(logged.size(), 2U); // a copy logs nothing
    EXPECT_STREQ(logged[0].text.Text(), L"EXCEPTION(line 12: ')' expected)");
    EXPECT_STREQ(logged[1].text.Text(), L"EXCEPTION(while reading 'x')");
}

TEST(Exception, NullFormatGivesAnEmptyStack)
{
    const DebugLines lines;
    const clsException error(nullptr);
    EXPECT_TRUE(error.Errors().IsEmpty());
    EXPECT_EQ(lines.Count(), 0U);
}
