// Saves on linux, which replace the file: the properties of the old file that are kept, and who may open it during a
// save.
#include "exports/profile/support.h"
#include "support/other_user.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <thread>

#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace profiletest;
namespace fs = std::filesystem;

namespace
{

constexpr wchar_t kSide[] = L".file.qxsave";

struct stat StatOf(const std::string& path)
{
    struct stat info = {};
    EXPECT_EQ(lstat(path.c_str(), &info), 0) << path;
    return info;
}

std::int32_t SaveValue(const std::string& path, const wchar_t* value)
{
    const Job job;
    ProfSetStringW(job, nullptr, L"a", value);
    return job.Save(path);
}

// Each test has a folder with one file.
class ProfileReplace : public testing::Test
{
protected:
    std::ptrdiff_t CountFiles() const
    {
        return std::distance(fs::directory_iterator(parent), fs::directory_iterator());
    }

    const TempFolder folder;
    const std::string path = folder.Make("file", "[/]\r\na=old\r\n");
    const fs::path parent = fs::path(path).parent_path();
};

} // namespace

TEST_F(ProfileReplace, KeepsModeAndLinks)
{
    ASSERT_EQ(chmod(path.c_str(), 0640), 0);
    const ino_t before = StatOf(path).st_ino;
    ASSERT_EQ(SaveValue(path, L"1"), PROF_OK);
    EXPECT_EQ(StatOf(path).st_mode & 07777, 0640u);
    EXPECT_NE(StatOf(path).st_ino, before) << "another file";

    const std::string link = folder.Path("link");
    fs::create_symlink("file", link);
    ASSERT_EQ(SaveValue(link, L"2"), PROF_OK);
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_EQ(Tree(Job(path)), "a=2;");

    const std::string second = folder.Path("second");
    fs::create_hard_link(path, second);
    ASSERT_EQ(SaveValue(path, L"3"), PROF_OK);
    EXPECT_EQ(StatOf(path).st_ino, StatOf(second).st_ino);
    EXPECT_EQ(Tree(Job(second)), "a=3;");

    fs::create_symlink("target", folder.Path("dangling"));
    ASSERT_EQ(SaveValue(folder.Path("dangling"), L"4"), PROF_OK);
    EXPECT_EQ(Tree(Job(folder.Path("target"))), "a=4;");

    const mode_t mask = umask(027);
    ASSERT_EQ(SaveValue(folder.Path("new"), L"5"), PROF_OK);
    umask(mask);
    EXPECT_EQ(StatOf(folder.Path("new")).st_mode & 07777, 0640u);
    EXPECT_EQ(CountFiles(), 6);
}

// A side file that a killed save has left is reused. A link that someone else has created under its name isn't
// followed.
TEST_F(ProfileReplace, SideFilesOfOthers)
{
    const std::string victim = folder.Make("victim", "unchanged"), side = folder.Path(Utf8(kSide));
    fs::create_symlink("victim", side);
    ASSERT_EQ(SaveValue(path, L"1"), PROF_OK);
    folder.Make(Utf8(kSide), "left by a killed process");
    ASSERT_EQ(SaveValue(path, L"2"), PROF_OK);
    EXPECT_FALSE(fs::exists(side));
    EXPECT_EQ(BytesOf(victim), "unchanged");
    fs::create_directory(side);
    ASSERT_EQ(SaveValue(path, L"3"), PROF_OK) << "in place";
    EXPECT_EQ(Tree(Job(path)), "a=3;");
}

TEST_F(ProfileReplace, FullDiskLeavesTheOldFileAndNoNewOne)
{
    const Job job;
    ProfSetStringW(job, nullptr, L"a", Wide(100000, L'x'));
    const Job held = Job::Exclusive(folder.Make("held", "[/]\r\na=0\r\n"));
    ProfSetStringW(held, nullptr, L"a", Wide(100000, L'x'));
    fs::create_symlink("target", folder.Path("dangling"));
    fs::create_directory(folder.Path(".dangling.qxsave")); // so that the target is created directly

    rlimit limit{};
    getrlimit(RLIMIT_FSIZE, &limit);
    const rlimit small{50000, limit.rlim_max};
    const auto handler = signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &small);
    const std::int32_t existing = job.Save(path), fresh = job.Save(folder.Path("new"));
    const std::int32_t throughLink = job.Save(folder.Path("dangling"));
    const std::int32_t inPlace = ProfSaveW(held, nullptr, PROF_FORM_TEXT);
    setrlimit(RLIMIT_FSIZE, &limit);
    signal(SIGXFSZ, handler);
    EXPECT_EQ(existing, PROF_ERR_WRITE_FAILED);
    EXPECT_EQ(fresh, PROF_ERR_WRITE_FAILED);
    EXPECT_EQ(throughLink, PROF_ERR_WRITE_FAILED);
    EXPECT_EQ(inPlace, PROF_ERR_WRITE_FAILED);
    EXPECT_EQ(BytesOf(path), "[/]\r\na=old\r\n");
    EXPECT_EQ(BytesOf(folder.Path("held")), "[/]\r\na=0\r\n");
    EXPECT_TRUE(fs::is_symlink(folder.Path("dangling")));
    EXPECT_EQ(CountFiles(), 4);
    EXPECT_EQ(ProfSaveW(held, nullptr, PROF_FORM_TEXT), PROF_OK) << "once there is room";
}

// A held file that another program has deleted or replaced can't be saved: its contents would be lost with its handle.
TEST_F(ProfileReplace, HeldFileWithoutAName)
{
    const Job held = Job::Exclusive(path);
    ProfSetStringW(held, nullptr, L"a", L"1");
    fs::rename(folder.Make("other", "[/]\r\na=other\r\n"), path);
    EXPECT_EQ(ProfSaveW(held, nullptr, PROF_FORM_TEXT), PROF_ERR_CANNOT_WRITE);
    EXPECT_EQ(Tree(Job(path)), "a=other;");
    const Job moved = Job::Exclusive(folder.Make("moved", "[/]\r\na=old\r\n"));
    fs::rename(folder.Path("moved"), folder.Path("away"));
    EXPECT_EQ(ProfSaveW(moved, nullptr, PROF_FORM_TEXT), PROF_ERR_CANNOT_WRITE);
    fs::create_hard_link(folder.Path("away"), folder.Path("second"));
    fs::remove(folder.Path("away"));
    EXPECT_EQ(ProfSaveW(moved, nullptr, PROF_FORM_TEXT), PROF_ERR_CANNOT_WRITE);
    EXPECT_EQ(Tree(Job(folder.Path("second"))), "a=old;");
    fs::remove(path);
    EXPECT_EQ(ProfSaveW(held, nullptr, PROF_FORM_TEXT), PROF_ERR_CANNOT_WRITE);
    EXPECT_FALSE(fs::exists(path));
    EXPECT_EQ(held.Save(folder.Path("elsewhere")), PROF_OK);
}

// A folder without read permission can't be opened for flushing. The save succeeds nevertheless.
TEST_F(ProfileReplace, FolderThatCannotBeRead)
{
    fs::permissions(parent, fs::perms{0300});
    {
        const qxtest::OtherUser user{parent, path};
        const Job held = Job::Exclusive(path);
        for (const wchar_t* value : {L"1", L"2"})
        {
            ProfSetStringW(held, nullptr, L"a", value);
            EXPECT_EQ(ProfSaveW(held, nullptr, PROF_FORM_TEXT), PROF_OK);
        }
    }
    EXPECT_EQ(Tree(Job(path)), "a=2;");
    fs::permissions(parent, fs::perms{0700});
}

TEST_F(ProfileReplace, HeldFileIsNeverFree)
{
    const Job held = Job::Exclusive(path);
    std::atomic<bool> isDone = false;
    std::atomic<int> tries = 0;
    auto intruder = std::async(std::launch::async,
        [&]
        {
            const Wide name(path);
            for (; !isDone; ++tries)
            {
                const HANDLE file = CreateFileW(name, GENERIC_WRITE,
                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING, 0, nullptr);
                if (file != INVALID_HANDLE_VALUE)
                {
                    CloseHandle(file);
                    return false;
                }
            }
            return true;
        });
    std::int32_t error = PROF_OK;
    for (int i = 0; i < 200 && error == PROF_OK; ++i)
    {
        ProfSetStringW(held, nullptr, L"a", Wide(std::to_string(i)));
        error = ProfSaveW(held, nullptr, PROF_FORM_TEXT);
    }
    isDone = true;
    EXPECT_EQ(error, PROF_OK);
    EXPECT_TRUE(intruder.get()) << "after " << tries << " tries";
    EXPECT_EQ(Tree(Job(path)), "a=199;");
}

TEST_F(ProfileReplace, WaitingReaderOpensTheNewFile)
{
    const std::string fresh = folder.Make("fresh", "[/]\r\na=new\r\n");
    const HANDLE old = CreateFileW(Wide(path), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
        nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_TRUE(LockFile(old, 0, 0, 1, 0));
    auto reader = std::async(std::launch::async, [&] { return Tree(Job(path)); });
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    fs::rename(fresh, path);
    UnlockFile(old, 0, 0, 1, 0);
    CloseHandle(old);
    EXPECT_EQ(reader.get(), "a=new;");
}

// The other program locks the file, but doesn't keep others from opening it.
TEST_F(ProfileReplace, WaitingSaveKeepsToItsName)
{
    const int other = open(path.c_str(), O_RDWR | O_CLOEXEC);
    struct flock lock = {F_WRLCK, SEEK_SET, 0, 1, 0};
    ASSERT_EQ(fcntl(other, F_OFD_SETLK, &lock), 0);
    auto saver = std::async(std::launch::async, [&] { return SaveValue(path, L"new"); });
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    fs::rename(path, folder.Path("away"));
    close(other);
    EXPECT_EQ(saver.get(), PROF_OK);
    EXPECT_EQ(Tree(Job(path)), "a=new;");
    EXPECT_EQ(Tree(Job(folder.Path("away"))), "a=old;");
}
