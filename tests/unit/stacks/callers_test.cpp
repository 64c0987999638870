#include "stacks/callers.h"

#include "core/debugger.h"
#include "core/text/string.h"
#include "module/module_paths.h"
#include "stacks/caller_lines.h"
#include "support/debug_lines.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <vector>

using namespace qx;
using namespace qxtest;

namespace
{

// Calls itself, so that there are more frames than a capture may store.
[[gnu::noinline]] unsigned CaptureDeep(unsigned depth, scCaller* entries, unsigned count)
{
    const unsigned captured = depth > 0 ? CaptureDeep(depth - 1, entries, count) : CaptureCallers(entries, count);
    __asm__ volatile("" ::: "memory"); // keeps the frame
    return captured;
}

TEST(Callers, AddressesOnlyAndAtMostTwoHundred)
{
    int mark = 0;
    std::vector<scCaller> entries(300, scCaller{&mark, nullptr, &mark});
    EXPECT_EQ(CaptureDeep(250, entries.data(), 300), 200u);
    EXPECT_EQ(CaptureDeep(250, entries.data(), 3), 3u);
    EXPECT_EQ(CaptureCallers(entries.data(), 0), 0u);
    for (unsigned index = 0; index < 200; ++index)
    {
        EXPECT_NE(entries[index].address, nullptr);
        EXPECT_EQ(entries[index].reserved, &mark);
        EXPECT_EQ(entries[index].reserved2, &mark);
    }
    EXPECT_EQ(entries[200].address, nullptr);
    // The capture returned to the first address; the other addresses are in the recursion.
    EXPECT_NE(entries[0].address, entries[3].address);
    EXPECT_EQ(entries[3].address, entries[100].address);
}

TEST(Callers, TracesOfFailuresGoToTheDebugOutput)
{
    PrepareStacks();
    DebugLines lines;
    DumpCallers(0, 3);
    ASSERT_EQ(lines.Count(), 4u);
    EXPECT_STREQ(lines.Entries()[0].text, L"3 traces");
    EXPECT_STREQ(lines.Entries()[1].text.Left(4), L"  0X");

    BreakOrTrace(2);
    ASSERT_EQ(lines.Count(), 7u);
    EXPECT_STREQ(lines.Entries()[4].text, L"2 traces");
    DumpCallers(500, 3);
    EXPECT_STREQ(lines.Last(), L"0 traces");
}

TEST(Callers, ModulesOfAddresses)
{
    const String program = ModulePath(nullptr);
    scCaller entries[4] = {};
    entries[0].address = entries[1].address = reinterpret_cast<void*>(&CaptureDeep);
    entries[2].address = nullptr; // free memory
    entries[3].address = entries; // no module
    DebugLines lines;
    WriteCallerModules(entries, 4, 1);
    ASSERT_EQ(lines.Count(), 2u);
    EXPECT_STREQ(lines.Entries()[0].text, String(String::kFormatted, L"\n [called by %s]", program.Text()));
    EXPECT_STREQ(lines.Last(), L"\n");
    WriteCallerModules(entries, 0, 0);
    EXPECT_EQ(lines.Count(), 3u);
}

} // namespace
