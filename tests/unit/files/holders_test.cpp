#include "core/debugger.h"
#include "files/allocation_count.h"
#include "files/auto_release.h"
#include "files/global_lock.h"
#include "files/handle_holder.h"
#include "support/debug_lines.h"
#include "support/developer_run.h"
#include "support/fake_stream.h"
#include "support/run_in_threads.h"
#include "support/temp_folder.h"

#include <gtest/gtest.h>

using namespace qx;
using namespace qxtest;

namespace
{

bool IsOpenHandle(HANDLE handle)
{
    LARGE_INTEGER size = {};
    return GetFileSizeEx(handle, &size) != FALSE;
}

} // namespace

TEST(AutoRelease, CountsReferences)
{
    FakeStream stream;
    {
        clsAutoRelease<IStream*> a(&stream);
        clsAutoRelease<IStream*> b = a;
        EXPECT_EQ(stream.references, 3U);
        clsAutoRelease<IStream*> c = std::move(b);
        EXPECT_EQ(stream.references, 3U);
        EXPECT_FALSE(b);
        a = a;
        EXPECT_EQ(stream.references, 3U);
        c = nullptr;
        EXPECT_EQ(stream.references, 2U);
        c.Adopt(a.Detach());
        EXPECT_EQ(stream.references, 2U);
        *c.Receive() = &stream; // like a call that returns a reference
        EXPECT_EQ(stream.references, 1U);
        stream.AddRef();
    }
    EXPECT_EQ(stream.references, 1U);
}

TEST(AutoRelease, EmptyOneIsReportedToDevelopers)
{
    static int frames = 0;
    const StackTraceHook former = SetStackTraceHook([](int count) { frames = count; });
    const DebugLines lines;
    const clsAutoRelease<IStream*> empty;
    EXPECT_EQ(empty.operator->(), nullptr);
    EXPECT_EQ(lines.Count(), 0U);

    const qxtest::UserIs developer(L"qvx");
    EXPECT_EQ(empty.operator->(), nullptr);
    EXPECT_STREQ(lines.Only().Text(), L"ERROR: Interface pointer is NULL, GPF will follow!");
    EXPECT_EQ(frames, 50);
    SetStackTraceHook(former);
}

TEST(AllocationCount, FollowsTheObjectsOfAllThreads)
{
    struct Thing : clsAllocationCountVerifier<Thing, 3>
    {
    };
    RunInThreads(4,
        [](unsigned)
        {
            for (int n = 0; n < 10000; ++n)
            {
                const Thing thing;
                const Thing copy = thing;
            }
        });
    EXPECT_EQ(Thing::LivingObjects(), 0);
    EXPECT_GE(Thing::MostLivingObjects(), 2);
    EXPECT_LE(Thing::MostLivingObjects(), 8);
}

TEST(HandleHolder, ClosesWhatIsItsOwn)
{
    const TempFolder folder;
    const String path = folder.Make(L"file", "abc");
    const HANDLE own = OpenToRead(path, FILE_SHARE_READ), foreign = OpenToRead(path, FILE_SHARE_READ);
    {
        clsGenericHandleObjectAutoRelease a(own, true), b(foreign, false), none(INVALID_HANDLE_VALUE, true);
        EXPECT_TRUE(a.IsValid());
        EXPECT_FALSE(none.IsValid());
    }
    EXPECT_FALSE(IsOpenHandle(own));
    EXPECT_TRUE(IsOpenHandle(foreign));
    clsGenericHandleObjectAutoRelease holder(foreign, true);
    EXPECT_EQ(holder.Detach(), foreign);
    EXPECT_FALSE(holder.IsValid());
    holder.Take(foreign, true);
    holder.Take(nullptr, true);
    EXPECT_FALSE(IsOpenHandle(foreign));
}

TEST(GlobalLock, FreesItsBlockAndReportsOneThatIsStillLocked)
{
    const DebugLines lines;
    {
        const clsGlobalLock block(GMEM_MOVEABLE | GMEM_ZEROINIT, 100);
        ASSERT_TRUE(block.IsLocked());
        EXPECT_EQ(static_cast<const char*>(block.Get())[99], 0);
    }
    EXPECT_FALSE(clsGlobalLock(GMEM_MOVEABLE, ~std::size_t{0}).IsLocked());
    EXPECT_EQ(lines.Count(), 0U);

    const HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE, 10);
    GlobalLock(memory);
    for (const bool report : {true, false})
        clsGlobalLock(memory, false).SetReport(report);
    const String start(String::kFormatted, L"clsGlobalLock::Unlock(%#p): The handle is still locked 1 times: ", memory);
    EXPECT_EQ(String::Find(lines.Only().Text(), start.Text()), 0) << lines.Last().NarrowText();
    EXPECT_EQ(GlobalFlags(memory) & GMEM_LOCKCOUNT, 1U);
    GlobalUnlock(memory);
    EXPECT_EQ(GlobalFree(memory), nullptr);
}
