// Replaces the C library's calls that make a save durable, to see their order, and the owner of a saved file.
#include "exports/profile/whole_content.h"

#include <gmock/gmock.h>

#include <dlfcn.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace profiletest;

namespace
{

std::vector<std::string> steps;

const char* KindOf(int descriptor)
{
    struct stat info
    {
    };
    if (fstat(descriptor, &info) != 0)
        return "nothing";
    return S_ISDIR(info.st_mode) ? "folder" : "file";
}

} // namespace

extern "C" [[gnu::visibility("default")]] int fsync(int descriptor)
{
    static const auto next = reinterpret_cast<int (*)(int)>(dlsym(RTLD_NEXT, "fsync"));
    steps.push_back(std::string("flush the ") + KindOf(descriptor));
    return next(descriptor);
}

extern "C" [[gnu::visibility("default")]] int rename(const char* from, const char* to) noexcept
{
    static const auto next = reinterpret_cast<int (*)(const char*, const char*)>(dlsym(RTLD_NEXT, "rename"));
    steps.push_back("rename");
    return next(from, to);
}

namespace
{

// Without the first flush, the new name may lead to an empty file after a crash of the system; without the second one,
// the name itself may be the old one.
TEST(SaveSteps, FlushTheFileThenRenameThenFlushTheFolder)
{
    const TempFolder folder;
    const std::string path = folder.Path("file");
    const Job job;
    FillWhole(job, 'a', 10);
    ASSERT_EQ(job.Save(path), PROF_OK);
    steps.clear();
    ASSERT_EQ(job.Save(path), PROF_OK);
    EXPECT_THAT(steps, testing::ElementsAre("flush the file", "rename", "flush the folder"));
}

TEST(SaveSteps, KeepOwnerAndMode)
{
    const TempFolder folder;
    const std::string path = folder.Path("file");
    const Job job;
    FillWhole(job, 'a', 10);
    ASSERT_EQ(job.Save(path), PROF_OK);
    if (chown(path.c_str(), 12345, 23456) != 0)
        GTEST_SKIP() << "only the superuser gives files away";
    ASSERT_EQ(chmod(path.c_str(), 0641), 0);
    ASSERT_EQ(job.Save(path), PROF_OK);
    struct stat info
    {
    };
    ASSERT_EQ(stat(path.c_str(), &info), 0);
    EXPECT_EQ(info.st_uid, 12345u);
    EXPECT_EQ(info.st_gid, 23456u);
    EXPECT_EQ(info.st_mode & 07777, 0641u);
}

} // namespace
