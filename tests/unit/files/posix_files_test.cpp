// Links, pipes, hard links and permissions in places where the library expects files. Only for linux, because the tests
// create them with functions of linux.
#include "diag/log_file.h"
#include "files/folder.h"
#include "files/new_file.h"
#include "files/posix_files.h"
#include "files/temp_file_removal.h"
#include "files/temp_files.h"
#include "prof/embedded_files.h"
#include "support/other_user.h"
#include "support/system_call_filter.h"
#include "support/temp_folder.h"
#include "support/zip_builder.h"
#include "unit/files/own_temp_folder.h"
#include "unit/prof/job_support.h"
#include "zip/extraction.h"
#include "zip/zip_file.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>

#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

using namespace qx;
using namespace qxtest;
namespace fs = std::filesystem;

namespace
{

const OwnTempFolder& posixTemp = TempFolderOfTests();

unsigned ModeOf(const String& path)
{
    struct stat info = {};
    return lstat(NativePath(path).c_str(), &info) == 0 ? info.st_mode & 07777u : 0u;
}

void MakePipe(const String& path)
{
    ASSERT_EQ(mkfifo(NativePath(path).c_str(), 0600), 0);
}

} // namespace

TEST(Folder, EntriesAreReplacedAndLinksAreNot)
{
    const TempFolder own;
    const String other = own.Make(L"other", "old");
    fs::create_hard_link(NativePath(other), NativePath(own.Path(L"hard")));
    fs::create_symlink("other", NativePath(own.Path(L"link")));
    fs::create_directory_symlink(".", NativePath(own.Path(L"folder")));
    own.Make(L"fixed", "old");
    chmod(NativePath(own.Path(L"fixed")).c_str(), 0444);
    MakePipe(own.Path(L"pipe"));
    const clsFolder folder(own.Path());
    for (const wchar_t* name : {L"hard", L"fixed", L"pipe", L"new"})
    {
        {
            clsNewFile file(folder, name, 0640);
            ASSERT_TRUE(file.IsOpen()) << String(name).NarrowText();
            EXPECT_EQ(file.File().WriteBytes("new"), 3);
            EXPECT_TRUE(file.SetWhole());
        }
        EXPECT_EQ(BytesOf(own.Path(name)), "new");
        EXPECT_EQ(ModeOf(own.Path(name)) & ~0640u, 0u);
    }
    for (const wchar_t* name : {L"link", L"folder"})
    {
        EXPECT_FALSE(clsNewFile(folder, name).IsOpen());
        EXPECT_EQ(GetLastError(), kErrorIsLink);
        clsFolder below;
        below.OpenSubfolder(folder, name);
        EXPECT_FALSE(below.IsOpen());
        EXPECT_TRUE(folder.IsLink(name));
    }
    for (const wchar_t* name : {L"", L".", L"..", L"a/b", L"a\\b", L"../other"})
        EXPECT_FALSE(clsNewFile(folder, name).IsOpen()) << String(name).NarrowText();
    EXPECT_EQ(BytesOf(other), "old");
    {
        const clsNewFile unfinished(folder, L"unfinished");
        EXPECT_TRUE(Exists(own.Path(L"unfinished")));
    }
    EXPECT_FALSE(Exists(own.Path(L"unfinished")));
    EXPECT_TRUE(CreateLink(folder, L"link", "new/target"));
    EXPECT_EQ(LinkTargetOf(own.Path(L"link")), "new/target");
    EXPECT_EQ(LinkTargetOf(other), std::nullopt);
}

// Without a check, these opens would block, reads would never end, or written data would be lost.
TEST(Pipes, AreNoFiles)
{
    const TempFolder own;
    MakePipe(own.Path(L"pipe"));
    for (const String& path : {own.Path(L"pipe"), String(L"/dev/null")})
        for (const FileAccess access : {FileAccess::Read, FileAccess::Write, FileAccess::ReadWrite})
            for (const FileDisposition disposition :
                {FileDisposition::OpenExisting, FileDisposition::OpenAlways, FileDisposition::CreateAlways})
            {
                clsFileRW file;
                EXPECT_EQ(file.Open(path, access, disposition, FileShare::Read, kFileData), -1);
                EXPECT_EQ(GetLastError(), DWORD{ERROR_BAD_FILE_TYPE});
                EXPECT_EQ(file.GetErrorKind(), FileError::Other);
                EXPECT_STREQ(file.GetErrorText().Text(), L"is a pipe or a device, not a file");
            }

    const JobHolder job = NewJob();
    EXPECT_EQ(AppendFiles(job->Root(), own.Path(L"pipe"), L""), 1) << "found";
    EXPECT_TRUE(job->Root().IsEmpty());
    DebugLogFile(own.Path(L"pipe"), false).Append(L"line", 4);
    clsZIPFile archive(own.Path(L"zip"), L"");
    EXPECT_EQ(archive.AddList(own.Path(), L"", L"pipe", 0), clsZIPFile::kCannotOpen);
}

// A filter of system calls simulates an old kernel for the process that extracts the archive.
TEST(FolderDeathTest, LinksAreNotFollowedWithoutOpenat2)
{
    if (prctl(PR_GET_SECCOMP) != 0)
        GTEST_SKIP() << "no filters here";
    const TempFolder own;
    const String witness = own.Make(L"witness", "untouched");
    const String archive = own.Make(
        L"zip", Build({BuiltMember("up/witness", "evil"), BuiltMember("file", "evil"), BuiltMember("sub/x", "good")}));
    const fs::path inner = NativePath(own.Path(L"inner"));
    fs::create_directories(inner);
    fs::create_directory_symlink("..", inner / "up");
    fs::create_symlink("../witness", inner / "file");
    const auto extract = [&]
    {
        if (!LetCallsFail({SYS_openat2}, ENOSYS))
            return 2;
        int refused = 0;
        const auto count = [&](const String&, const String& reason)
        {
            refused += reason.View().ends_with(L"leads through a link");
        };
        return ExtractArchive(archive, own.Path(L"inner"), true, count) == ExtractResult::Incomplete && refused == 2
                   ? 0
                   : 1;
    };
    EXPECT_EXIT(_exit(extract()), testing::ExitedWithCode(0), "");
    EXPECT_EQ(BytesOf(witness), "untouched");
    EXPECT_EQ(BytesOf(own.Path(L"inner/sub/x")), "good");
    EXPECT_TRUE(fs::is_symlink(inner / "file"));
}

TEST(TempFiles, AreForTheirUserAlone)
{
    umask(0);
    chmod(NativePath(posixTemp.Path()).c_str(), 0755);
    const String name = MakeTempFile(L"trelmo", L"x", L"tmp", nullptr);
    EXPECT_EQ(ModeOf(name), 0600u);
    EXPECT_EQ(ModeOf(GetTempSubfolder()), 0700u);
    EXPECT_TRUE(DeleteFileW(name));
    // An older version let others read the folder and the activity file, and a link may be in the file's place.
    chmod(NativePath(GetTempSubfolder()).c_str(), 0757);
    EXPECT_TRUE(DeleteFileW(MakeTempFile(L"trelmo", L"x", L"tmp", nullptr)));
    EXPECT_EQ(ModeOf(GetTempSubfolder()), 0700u);
    const String activity = GetTempSubfolder() + L"/activity";
    for (const mode_t old : {0000, 0644})
    {
        chmod(NativePath(activity).c_str(), old);
        clsGenericHandleObjectAutoRelease(OpenActivityFile(L"activity"), true);
        EXPECT_EQ(ModeOf(activity), 0600u);
    }
    fs::remove(NativePath(activity));
    fs::create_symlink("../target", NativePath(activity));
    EXPECT_EQ(OpenActivityFile(L"activity"), INVALID_HANDLE_VALUE);
    EXPECT_FALSE(Exists(posixTemp.Path(L"target")));
    fs::remove(NativePath(activity));
    for (const auto& [prefix, extension] :
        {std::pair(L"../x", L"tmp"), {L"x", L"/../../y"}, {L"a\\b", L""}, {L"x", L"a:b"}})
        EXPECT_STREQ(MakeTempFile(L"trelmo", prefix, extension, nullptr).Text(), L"");

    // A link in the place of the folder isn't followed.
    fs::remove_all(NativePath(GetTempSubfolder()));
    const TempFolder elsewhere;
    fs::create_directory_symlink(NativePath(elsewhere.Path()), NativePath(GetTempSubfolder()));
    const String beside = MakeTempFile(L"trelmo", L"x", L"tmp", nullptr);
    EXPECT_STREQ(beside.Left(GetTempFolder(true).Length()).Text(), GetTempFolder(true).Text());
    EXPECT_TRUE(fs::is_empty(NativePath(elsewhere.Path())));
}

TEST(TempFiles, RemovalAndSweepTouchNoTargetsAndWaitForNoPipes)
{
    const TempFolder own;
    const String target = own.Make(L"target", "kept");
    chmod(NativePath(target).c_str(), 0444);
    fs::create_symlink("target", NativePath(own.Path(L"link")));
    EXPECT_EQ(RemoveFile(own.Path(L"link")), Removal::Removed);
    EXPECT_EQ(ModeOf(target), 0444u);
    EXPECT_EQ(RemoveFile(target), Removal::Removed) << "read-only files go";
    const String closed = own.Make(L"closed", "");
    chmod(NativePath(closed).c_str(), 0000);
    {
        const OtherUser user{NativePath(own.Path()), NativePath(closed)};
        EXPECT_EQ(RemoveFile(closed), Removal::Removed);
    }
    MakePipe(own.Path(L"_23_pipe"));
    FILETIME later;
    GetSystemTimeAsFileTime(&later);
    later.dwHighDateTime += 1000;
    SweepTempFiles(own.Path(L"_23_activity.signal"), later);
    EXPECT_FALSE(fs::exists(NativePath(own.Path(L"_23_pipe"))));
}
