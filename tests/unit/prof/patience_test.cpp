// How long a job tries to open or save a file that another one has open.
#include "core/ticks.h"
#include "files/handle_holder.h"
#include "support/temp_folder.h"
#include "unit/prof/job_support.h"

#include <gtest/gtest.h>

using namespace qx;
using namespace qxtest;

namespace
{

unsigned long long fakeTicks; // in milliseconds

unsigned long long WINAPI FastTicks()
{
    return fakeTicks += 1000;
}

// A clock in which the ten seconds of a job pass quickly.
class FastClock
{
public:
    FastClock()
    {
        fakeTicks = 0;
        DecideTickSource(FastTicks);
    }
    ~FastClock() { DecideTickSource(GetTickCount64); }
    FastClock(const FastClock&) = delete;
    FastClock& operator=(const FastClock&) = delete;
};

void ExpectTenSeconds()
{
    EXPECT_GE(fakeTicks, 10'000u);
    EXPECT_LE(fakeTicks, 12'000u);
}

} // namespace

TEST(ProfPatience, TenSecondsForAFileThatIsOpenElsewhere)
{
    const TempFolder folder;
    const String path = folder.Make(L"file", "[/]\na=1\n");
    clsGenericHandleObjectAutoRelease keeper(
        CreateFileW(path.Text(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr), true);
    for (const ProfMode mode : {ProfMode::Read, ProfMode::Hold})
    {
        const JobHolder job = NewJob(mode);
        const FastClock clock;
        job->Open(path);
        EXPECT_EQ(job->Error(), kProfLocked);
        ExpectTenSeconds();
    }
    const JobHolder job = NewJob();
    const FastClock clock;
    EXPECT_EQ(job->Save(path, 0), kProfCannotWrite);
    ExpectTenSeconds();
    keeper.Release();
    EXPECT_EQ(BytesOf(path), "[/]\na=1\n");
}
