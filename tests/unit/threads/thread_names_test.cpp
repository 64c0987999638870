#include "core/thread_names.h"

#include <gtest/gtest.h>

using namespace qx;

namespace
{

TEST(ThreadNames, ARemovalOnlyTakesItsOwnName)
{
    ThreadNames names;
    const char first[] = "same";
    const char second[] = "same";
    names.Enter(5, first);
    names.Enter(5, second); // the id is in use again
    names.Remove(5, first);
    EXPECT_EQ(names.Find(5), second);
    names.Remove(5, second);
    names.Remove(6, second);
    EXPECT_EQ(names.Find(5), nullptr);
}

} // namespace
