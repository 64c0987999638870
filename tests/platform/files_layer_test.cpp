// Features only the layer has: drives and shares as links, names that are not UTF-8, links, locks of other programs.
#include "support/own_drives.h"
#include "system_support.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace qxtest;

namespace
{

namespace fs = std::filesystem;

void MakeNative(const fs::path& path, std::string_view bytes = "native")
{
    std::ofstream(path, std::ios::binary) << bytes;
}

class FilesOfTheLayer : public testing::Test
{
protected:
    FilesOfTheLayer()
    {
        fs::create_directory(native / "drive");
        fs::create_directory(native / "share");
        drives.MakeShare("server", "empty");
        drives.Link("c:", native / "drive");
        drives.Link("unc/server/share", native / "share");
        MakeNative(drives.MakeShare("mixed", "SHARE") / "file", "on the other share");
        MakeNative(native / "drive/file", "on the drive");
        MakeNative(native / "share/file", "on the share");
        MakeNative(native / "file", "at the root");
    }

    const Folder folder;
    const fs::path native = folder.path().Narrow();
    const OwnDrives drives;
};

TEST_F(FilesOfTheLayer, FormsOfPaths)
{
    const Text root = folder.path();
    std::string narrow = root.Narrow();
    std::replace(narrow.begin(), narrow.end(), '/', '\\');
    const Text backslashed = Text::Widen(narrow);
    const std::pair<Text, const char*> cases[] = {{backslashed + L"\\file", "at the root"},
        {Text(L"z:") + root + L"/file", "at the root"}, {Text(L"\\\\?\\Z:") + backslashed + L"\\file", "at the root"},
        {Text(L"\\\\?\\") + root + L"/file", "at the root"},
        {Text(L"/") + root + L"/file", "at the root"}, // two slashes count as one
        {L"C:\\file", "on the drive"}, {L"c:file", "on the drive"},
        {L"C:\\..\\..\\file", "on the drive"}, // the root of a drive has no parent
        {L"\\\\?\\C:\\file", "on the drive"}, {L"\\\\server\\share\\file", "on the share"},
        {L"\\\\SERVER\\Share\\sub\\..\\file", "on the share"}, {L"\\\\mixed\\SHARE\\file", "on the other share"},
        {L"\\\\?\\UNC\\server\\share\\file", "on the share"}};
    for (const auto& [path, content] : cases)
        EXPECT_EQ(BytesOf(path), content) << path.Narrow();
    for (const wchar_t* path : {L"D:\\file", L"\\\\server\\other\\file", L"\\\\.\\device"})
        EXPECT_EQ(OpenError(path, GENERIC_READ), DWORD{ERROR_PATH_NOT_FOUND}) << Text(path).Narrow();
    EXPECT_EQ(OpenError(root + L"/FILE", GENERIC_READ), DWORD{ERROR_FILE_NOT_FOUND}) << "names have case";

    EXPECT_EQ(FullPath(L"Z:\\a\\b"), Text(L"/a/b")) << "given out as Linux has them";
}

// Drives and shares that don't exist keep their form too, because only calls that access files map them.
TEST_F(FilesOfTheLayer, FullPathsOfDrivesAndSharesKeepTheirForm)
{
    constexpr std::pair<const wchar_t*, const wchar_t*> kCases[] = {{L"c:\\sub\\", L"c:\\sub\\"}, {L"Q:", L"Q:\\"},
        {L"Q:\\", L"Q:\\"}, {L"q:Name/b//c", L"q:\\Name\\b\\c"}, {L"Q:\\..\\a\\..\\..\\.\\b", L"Q:\\b"},
        {L"\\\\?\\Q:\\a", L"Q:\\a"}, {L"\\\\Server\\Share", L"\\\\Server\\Share"},
        {L"\\\\server\\share\\", L"\\\\server\\share\\"}, {L"\\\\server\\\\share/a", L"\\\\server\\share\\a"},
        {L"\\\\server\\share\\..\\..\\a\\.", L"\\\\server\\share\\a"}, {L"\\\\server", L"\\\\server"},
        {L"\\\\?\\UNC\\server\\share\\a", L"\\\\server\\share\\a"}, {L"\\\\..\\..\\file", L""},
        {L"\\\\server\\..\\file", L""}, {L"\\\\", L""}, {L"\\\\.\\device", L""}};
    for (const auto& [path, full] : kCases)
        EXPECT_EQ(FullPath(path), Text(full)) << Text(path).Narrow();
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_NAME});

    WCHAR buffer[100] = {};
    WCHAR* name = nullptr;
    EXPECT_EQ(GetFullPathNameW(L"Q:/a", 100, buffer, &name), 4u);
    EXPECT_EQ(name, buffer + 3);
    EXPECT_EQ(GetFullPathNameW(L"Q:\\a\\", 100, buffer, &name), 5u);
    EXPECT_EQ(name, nullptr) << "no name behind the last separator";
    EXPECT_EQ(GetFullPathNameW(L"Q:\\a", 4, buffer, nullptr), 5u) << "the size that is needed";

    EXPECT_EQ(GetLongPathNameW(L"C:FILE/../file", buffer, 100), 7u);
    EXPECT_EQ(Text(buffer), Text(L"C:\\file"));
    EXPECT_EQ(GetLongPathNameW(L"\\\\Server\\share\\file", buffer, 100), 19u);
    EXPECT_EQ(Text(buffer), Text(L"\\\\Server\\share\\file"));
    EXPECT_EQ(GetLongPathNameW(L"Q:\\file", buffer, 100), 0u);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_PATH_NOT_FOUND});
}

TEST_F(FilesOfTheLayer, NamesOfAnyBytesAreListedAndOpened)
{
    const std::string names[] = {"\xC3\xA4.txt", "\xE4.txt", "\xF0\x9F\x98\x80.txt", "\xED\xA0\x80.txt", "a\\b.txt",
        "\xFF\xFE.txt", "\xC3.txt", "star*.txt"};
    fs::create_directory(native / "names");
    for (const std::string& name : names)
        MakeNative(native / "names" / name, name);
    WIN32_FIND_DATAW data{};
    const HANDLE find = FindFirstFileW(folder / L"names/*.txt", &data);
    ASSERT_NE(find, INVALID_HANDLE_VALUE);
    std::size_t count = 0;
    do
    {
        ++count;
        const Text path = folder / L"names/" + data.cFileName;
        const std::string content = BytesOf(path);
        EXPECT_NE(std::find(std::begin(names), std::end(names), content), std::end(names)) << content;
        EXPECT_TRUE(DeleteFileW(path));
        EXPECT_FALSE(fs::exists(native / "names" / content));
    } while (FindNextFileW(find, &data));
    FindClose(find);
    EXPECT_EQ(count, std::size(names));
}

TEST_F(FilesOfTheLayer, Links)
{
    fs::create_symlink(native / "file", native / "link");
    fs::create_symlink(native / "missing", native / "dangling");
    EXPECT_EQ(BytesOf(folder / L"link"), "at the root");
    EXPECT_EQ(GetFileAttributesW(folder / L"link"), DWORD{FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_REPARSE_POINT});
    for (const wchar_t* name : {L"l*k", L"dangling"})
    {
        WIN32_FIND_DATAW data{};
        FindClose(FindFirstFileW(folder / name, &data));
        EXPECT_NE(data.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT, 0u);
    }
    EXPECT_TRUE(DeleteFileW(folder / L"link"));
    EXPECT_TRUE(fs::exists(native / "file")) << "the link goes, not the file";
    MakeFile(folder / L"dangling", "made through the link");
    EXPECT_EQ(BytesOf(folder / L"missing"), "made through the link");
}

TEST_F(FilesOfTheLayer, WhatIsMadeInATempFolderForAllIsForItsUserAlone)
{
    const auto mode = [this](const char* name)
    {
        return static_cast<unsigned>(fs::status(native / name).permissions());
    };
    fs::create_directory(native / "temp");
    chmod((native / "temp").c_str(), 01777);
    const mode_t formerMask = umask(022);
    SetEnvironmentVariableW(L"TMPDIR", folder / L"temp");
    ASSERT_TRUE(CreateDirectoryW(folder / L"temp/own", nullptr));
    ASSERT_TRUE(CreateDirectoryW(folder / L"temp/own/below", nullptr));
    MakeFile(folder / L"temp/file");
    MakeFile(folder / L"beside");
    umask(formerMask);
    EXPECT_EQ(mode("temp/own"), 0700u);
    EXPECT_EQ(mode("temp/own/below"), 0755u);
    EXPECT_EQ(mode("temp/file"), 0600u);
    EXPECT_EQ(mode("beside"), 0644u);
    constexpr uid_t kAnother = 65534;
    if (chown((native / "temp/own").c_str(), kAnother, kAnother) == 0) // only root can create such a folder
    {
        EXPECT_ERROR(ERROR_ACCESS_DENIED, CreateDirectoryW(folder / L"temp/own", nullptr));
    }
    SetEnvironmentVariableW(L"TMPDIR", nullptr);
}

// Programs that don't use the layer lock files in other ways.
TEST_F(FilesOfTheLayer, LocksOfOtherPrograms)
{
    const Text path = folder / L"file";
    const int other = open((native / "file").c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_GE(other, 0);
    const auto lock = [other](short type, off_t length)
    {
        struct flock request = {type, SEEK_SET, 0, length, 0};
        return fcntl(other, F_OFD_SETLK, &request);
    };
    // Another program can lock a file's data in spite of the layer's locks.
    {
        const Handle file = Open(path, GENERIC_READ | GENERIC_WRITE, 0);
        EXPECT_TRUE(file);
        EXPECT_EQ(lock(F_WRLCK, 1000), 0);
        EXPECT_ERROR(ERROR_LOCK_VIOLATION, LockFile(file, 0, 0, 1, 0));
        // The layer's locks don't hide locks that already existed.
        EXPECT_EQ(lock(F_RDLCK, 0), 0);
        EXPECT_EQ(OpenError(path, GENERIC_READ), DWORD{ERROR_SHARING_VIOLATION});
    }
    // A file that another program has write-locked as a whole is in use; a read-locked one may be read.
    EXPECT_EQ(lock(F_WRLCK, 0), 0);
    EXPECT_EQ(OpenError(path, GENERIC_READ), DWORD{ERROR_SHARING_VIOLATION});
    EXPECT_EQ(lock(F_RDLCK, 0), 0);
    EXPECT_TRUE(Open(path, GENERIC_READ, FILE_SHARE_READ));
    EXPECT_EQ(OpenError(path, GENERIC_WRITE), DWORD{ERROR_SHARING_VIOLATION});
    EXPECT_TRUE(DeleteFileW(path)) << "who reads on Linux doesn't mind that the name goes";
    close(other);
}

} // namespace
