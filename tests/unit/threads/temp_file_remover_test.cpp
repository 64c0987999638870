// The temp file manager, with a simulated clock.
#include "threads/temp_file_remover.h"

#include "core/ticks.h"
#include "files/file_time.h"
#include "files/path_separator.h"
#include "files/temp_file_removal.h"
#include "files/temp_files.h"
#include "threads/temp_file_manager.h"
#include "threads_support.h"
#include "unit/files/own_temp_folder.h"

#include <atomic>

using namespace qx;
using namespace qxtest;

namespace
{

constexpr std::uint64_t kHour = kUnitsPerHour;

std::uint64_t Now()
{
    FILETIME now;
    GetSystemTimeAsFileTime(&now);
    return UnitsOf(now);
}

// Returns the number of lines with the name at this position.
std::size_t CountOf(const DebugLines& lines, const wchar_t* format, const String& name)
{
    return lines.CountOf(String(String::kFormatted, format, name.Text()).View());
}

// A clock that stands still unless the test advances it. The thread only waits for its end, because the test runs the
// rounds itself.
class TestClock : public TempFileClock
{
public:
    unsigned long long Ticks() const override
    {
        const unsigned long long now = ticks;
        ticks += ticksForAsking;
        return now;
    }
    FILETIME UtcNow() const override { return FileTimeOf(utc); }
    DWORD Wait(DWORD) const override { return INFINITE; }

    mutable unsigned long long ticks = 1000;
    unsigned long long ticksForAsking = 0;
    std::uint64_t utc = Now();
};

class TempFileRemover : public ::testing::Test
{
protected:
    TempFileRemover()
    {
        TempFolderOfTests();
        CreateDirectoryW(Folder(), nullptr);
    }
    ~TempFileRemover() override { DeleteFileW(Signal()); }

    static String Folder() { return GetTempFolder(true) + L"trelmo"; }
    static String InFolder(const wchar_t* name) { return Folder() + String(&PATH_SEPARATOR, 0, 1) + name; }
    static String Signal() { return InFolder(L"_23_activity.signal"); }

    // Creates a file with a last write time `age` ago.
    String Make(const wchar_t* name, std::uint64_t age) const
    {
        String path = InFolder(name);
        MakeFile(path, "");
        SetWriteTime(path, FileTimeOf(clock.utc - age));
        return path;
    }

    TestClock clock;
};

TEST_F(TempFileRemover, FilesGoWhenTheyHaveRestedForTenSeconds)
{
    const String name = Make(L"_23_a.tmp", 0);
    SetFileAttributesW(name, FILE_ATTRIBUTE_READONLY);
    const UserIs developer(L"qvx");
    clsTempFileRemover remover(clock);
    remover.Round();
    const DebugLines lines;
    remover.Add(InFolder(L"_23_none.tmp"));
    remover.Add(name);
    EXPECT_EQ(remover.Round(), 9900u);
    EXPECT_TRUE(Exists(name));
    clock.utc += 10 * kUnitsPerSecond - 10'000;
    remover.Round();
    EXPECT_TRUE(Exists(name));
    clock.utc += 10'000;
    EXPECT_EQ(remover.Round(), 10'000u);
    EXPECT_FALSE(Exists(name));
    EXPECT_EQ(lines.Count(), 0u);
}

TEST_F(TempFileRemover, AFileInUseStaysOnTheList)
{
    const String held = Make(L"_23_a.tmp", kHour), free = Make(L"_23_b.tmp", kHour);
    clsGenericHandleObjectAutoRelease holder(OpenToRead(held, FILE_SHARE_READ), true);
    const UserIs developer(L"qvx");
    {
        clsTempFileRemover remover(clock);
        remover.Round();
        const DebugLines lines;
        remover.Add(held);
        remover.Add(free);
        EXPECT_EQ(remover.Round(), 9900u);
        EXPECT_FALSE(Exists(free)); // follows the file in use
        EXPECT_EQ(CountOf(lines, L"WRN: clsTempFileRemover: error deleting temp file '%s': ", held), 1u);
        EXPECT_EQ(lines.Last(), String(L" ...trying again later"));

        holder.Release();
        EXPECT_EQ(remover.Round(), 10'000u);
        EXPECT_FALSE(Exists(held));
    }
    // The remover makes one more attempt when it is destroyed.
    Make(L"_23_a.tmp", 0);
    holder.Take(OpenToRead(held, FILE_SHARE_READ), true);
    const DebugLines lines;
    {
        clsTempFileRemover remover(clock);
        for (const String& name : {held, Make(L"_23_b.tmp", 0), InFolder(L"_23_none.tmp")})
            remover.Add(name);
    }
    EXPECT_FALSE(Exists(free));
    EXPECT_EQ(CountOf(lines, L"cannot delete '%s', file will most likely remain on your system", held), 1u);
    EXPECT_EQ(CountOf(lines, L"temp file '%s' is gone!", InFolder(L"_23_none.tmp")), 1u);
    holder.Release();
    EXPECT_TRUE(DeleteFileW(held));
}

TEST_F(TempFileRemover, ManyFiles)
{
    clsTempFileRemover remover(clock);
    int count = 0;
    for (const auto& [files, pause] :
        {std::pair(3, 9700u), std::pair(89, 1100u), std::pair(90, 1000u), std::pair(100, 1000u)})
    {
        for (; count < files; ++count)
            remover.Add(Make(String(String::kFormatted, L"_23_%d.tmp", count), 0));
        EXPECT_EQ(remover.Round(), pause);
    }
    // Checking a file takes 25 ms now. A round may take 10 ms per file, so this one ends early.
    clock.utc += kHour;
    clock.ticksForAsking = 25;
    EXPECT_EQ(remover.Round(), 10'000u - 100 * 61);
    EXPECT_FALSE(Exists(InFolder(L"_23_38.tmp")));
    EXPECT_TRUE(Exists(InFolder(L"_23_39.tmp")));
}

TEST_F(TempFileRemover, OncePerDayAnHourOldFilesAreSwept)
{
    clsTempFileRemover remover(clock);
    const auto isSwept = [&](unsigned long long ticks, std::uint64_t signalAge)
    {
        const String old = Make(L"_23_old.tmp", kHour + 10'000), fresh = Make(L"_23_fresh.tmp", kHour);
        const String ofOthers = Make(L"_22_old.tmp", 24 * kHour);
        Make(L"_23_activity.signal", signalAge);
        clock.ticks += ticks;
        const UserIs developer(L"qvx");
        const DebugLines lines;
        remover.Round();
        EXPECT_TRUE(Exists(fresh));
        EXPECT_TRUE(Exists(ofOthers));
        EXPECT_TRUE(Exists(Signal()));
        const bool isGone = !Exists(old);
        EXPECT_EQ(
            lines.CountOf(L"deleting 1 files from temp directory that are older than one hour"), isGone ? 1u : 0u);
        for (const String& name : {old, fresh, ofOthers})
            DeleteFileW(name);
        return isGone;
    };
    EXPECT_TRUE(isSwept(0, 3 * kHour + 1000));
    EXPECT_FALSE(isSwept(86'399'999, 4 * kHour));
    EXPECT_TRUE(isSwept(1, 400 * kHour));
    EXPECT_FALSE(isSwept(86'400'000, 3 * kHour)); // another manager is active
    EXPECT_FALSE(isSwept(86'399'999, 4 * kHour)); // the only attempt of this day has been made
    EXPECT_TRUE(isSwept(1, 4 * kHour));
}

TEST_F(TempFileRemover, EachRoundTouchesTheActivityFile)
{
    clsTempFileRemover remover(clock);
    Make(L"_23_activity.signal", 5 * kHour);
    remover.Round();
    WIN32_FILE_ATTRIBUTE_DATA data{};
    ASSERT_TRUE(GetFileAttributesExW(Signal(), GetFileExInfoStandard, &data));
    EXPECT_GE(UnitsOf(data.ftLastWriteTime), clock.utc - 60 * kUnitsPerSecond);
    const std::string note = BytesOf(Signal());
    ASSERT_GT(note.size(), 12u);
    EXPECT_EQ(note.size() % 2, 0u);
    EXPECT_EQ(note.substr(note.size() - 2), std::string(")\0", 2));

    // Another process has the file open.
    const clsGenericHandleObjectAutoRelease holder(OpenToRead(Signal()), true);
    const DebugLines lines;
    remover.Round();
    EXPECT_EQ(CountOf(lines, L"cannot create/open activity file '%s': ", Signal()), 1u);
}

TEST_F(TempFileRemover, WithoutTheFolderTheFirstFileStartsTheThread)
{
    ASSERT_TRUE(RemoveDirectoryW(Folder()));
    const DebugLines lines;
    clsTempFileRemover remover(clock);
    EXPECT_EQ(lines.Only(), String(String::kFormatted, L"WRN: UTIL: path '%s' does not exist", Folder().Text()));
    EXPECT_EQ(remover.GetThreadState(), clsThreadBase::State::None);
    remover.Add(L"none");
    EXPECT_EQ(remover.GetThreadState(), clsThreadBase::State::Running);
    CreateDirectoryW(Folder(), nullptr);
    remover.Round();
    EXPECT_TRUE(Exists(Signal()));
}

// The manager's own thread runs the rounds, after a pause of ten seconds, which the clock shortens.
TEST_F(TempFileRemover, TheManagerOfTheProcess)
{
    class ShortPauses : public TempFileClock
    {
    public:
        DWORD Wait(DWORD milliseconds) const override
        {
            DWORD none = 0;
            first.compare_exchange_strong(none, milliseconds);
            return milliseconds / 100;
        }
        mutable std::atomic<DWORD> first = 0;
    } const pauses;
    OpenTempFileManager(pauses);
    OpenTempFileManager();
    const String name = Make(L"_23_a.tmp", 60 * kUnitsPerSecond);
    AddTempFile(name);
    EXPECT_TRUE(WaitUntil([&] { return !Exists(name); }));
    EXPECT_EQ(pauses.first, 10'000u);
    CloseTempFileManager();
}

} // namespace
