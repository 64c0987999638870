#include "files/paths.h"

#include "core/pattern/regex.h"
#include "files/file_finder.h"
#include "files/file_time.h"
#include "files/folder_tokens.h"
#include "files/path_separator.h"
#include "files/temp_files.h"
#include "support/own_settings.h"
#include "support/variable.h"
#include "unit/files/own_temp_folder.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <set>
#include <string>

using namespace qx;
using namespace qxtest;

namespace
{

// Must be set before the user's folder is queried.
const OwnTempFolder& temp = TempFolderOfTests();

std::uint64_t nextNumber;
std::uint64_t CountedNumber()
{
    return nextNumber++;
}

// Creates a file with some bytes and a last write time several days ago.
void MakeOldFile(const String& path, unsigned days)
{
    FILETIME now;
    GetSystemTimeAsFileTime(&now);
    const FILETIME then = FileTimeOf(UnitsOf(now) - 24 * kUnitsPerHour * days);
    const HANDLE file = CreateFileW(path, GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
    DWORD written = 0;
    WriteFile(file, "old", 3, &written, nullptr);
    SetFileTime(file, nullptr, nullptr, &then);
    CloseHandle(file);
}

String NumberedFile(const wchar_t* digits)
{
    return GetTempFolder(true) + L"trelmo" + String(&PATH_SEPARATOR, 0, 1) + L"_23_old" + digits + L".tmp";
}

} // namespace

TEST(Paths, Parts)
{
    const struct
    {
        const wchar_t *path, *directory, *stem, *name, *extension;
    } cases[] = {{L"/a/b.c/name.tar.gz", L"/a/b.c/", L"name.tar", L"name.tar.gz", L".gz"},
        {L"c:\\x\\name", L"c:\\x\\", L"name", L"name", L""}, {L"/a/b/", L"/a/b/", L"", L"", L""},
        {L"\\\\server\\share\\f.e", L"\\\\server\\share\\", L"f", L"f.e", L".e"}, {L"", L"", L"", L"", L""},
        {L".hidden", L"", L"", L".hidden", L".hidden"}};
    for (const auto& c : cases)
    {
        EXPECT_STREQ(GetPathDirectory(c.path).Text(), c.directory);
        EXPECT_STREQ(GetPathStem(c.path).Text(), c.stem);
        EXPECT_STREQ(GetPathName(c.path).Text(), c.name);
        EXPECT_STREQ(GetPathExtension(c.path).Text(), c.extension);
    }
    // A text that doesn't fit produces an empty result and no overrun.
    String longName;
    longName.Fill(L'n', 5000);
    EXPECT_STREQ(GetPathName(longName).Text(), L"");
}

TEST(Paths, Classes)
{
    const String folder = temp.Path();
    const String file = temp.Make(L"classified", "");
    const struct
    {
        String path;
        PathClass expected;
    } cases[] = {{L"lpt12:", PathClass::PrinterPort}, {L"COM3:", PathClass::SerialPort}, {L"LPT:", PathClass::Missing},
        {L"usb:abc", PathClass::Usb}, {folder, PathClass::Folder}, {String(L"FILE:") + file, PathClass::File},
        {String(L"file:") + folder, PathClass::Folder}, {file + L".no", PathClass::Missing},
        {L"FILE:", PathClass::Missing}};
    for (const auto& c : cases)
        EXPECT_EQ(ClassifyPath(c.path), c.expected) << ::testing::PrintToString(c.path.Text());
    EXPECT_TRUE(DeleteFileW(file));
}

TEST(Paths, NormalForm)
{
    const String folder = temp.Path();
    const String full = NormalizePath(folder);
    const String separator(&PATH_SEPARATOR, 0, 1);
    EXPECT_STREQ(NormalizePath(folder + L"/a/../b/./c").Text(), (full + separator + L"b" + separator + L"c").Text());
    EXPECT_STREQ(NormalizePath(folder + L"\\x\\..").Text(), full.Text());
    String tooLong(L"/");
    for (int i = 0; i < 100; ++i)
        tooLong += L"long/";
    EXPECT_STREQ(NormalizePath(tooLong).Text(), tooLong.Text());
}

TEST(Paths, FolderTokens)
{
    const OwnSettings settings;
    settings.Set(HKEY_CURRENT_USER, L"Qxut My Folder 1", L"/shell folder",
        L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders");
    String longValue;
    longValue.Fill(L'v', 700);
    const Variable token(L"QXUT_TEST_TOKEN", L"value"), longToken(L"QXUT_TEST_LONG", longValue);
    const struct
    {
        const wchar_t* text;
        String expanded;
    } cases[] = {{L"plain", L"plain"}, {L"%QXUT_TEST_TOKEN%/x", L"value/x"},
        {L"%Qxut My Folder 1%/x", L"/shell folder/x"}, {L"%qxut MY folder 1%", L"/shell folder"},
        {L"%NOSUCHTHING%/x", L"%NOSUCHTHING%/x"}, {L"%QXUT_TEST_LONG%%QXUT_TEST_TOKEN%", longValue + L"value"},
        {L"%", L"%"}, {L"%%", L"%%"}, {L"", L""}};
    for (const auto& c : cases)
        EXPECT_STREQ(ExpandFolderTokens(c.text).Text(), c.expanded.Text());
}

TEST(Paths, ListedAndLookedAt)
{
    const TempFolder own;
    const String folder = own.Path();
    CreateDirectoryW(folder + L"/sub", nullptr);
    for (const wchar_t* name : {L"one.txt", L"two.txt", L"three.dat"})
        own.Make(name, "1");
    const auto listed = [&](const wchar_t* pattern, bool directories)
    {
        std::multiset<std::u16string> names;
        for (FileFinder finder(folder + pattern, directories); finder.Next();)
            names.insert(reinterpret_cast<const char16_t*>(finder.Name()));
        return names;
    };
    EXPECT_EQ(listed(L"/*.txt", false), (std::multiset<std::u16string>{u"one.txt", u"two.txt"}));
    EXPECT_EQ(listed(L"/*", true), (std::multiset<std::u16string>{u"sub"}));
    EXPECT_EQ(listed(L"/*", false).size(), 3u);

    WIN32_FILE_ATTRIBUTE_DATA data{};
    EXPECT_FALSE(GetFileData(folder + L"/missing/too", data));
    EXPECT_TRUE(GetFileData(folder, data));
    EXPECT_NE(data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY, 0u);
    EXPECT_TRUE(RemoveDirectoryW(folder + L"/sub"));
}

TEST(TempFiles, NamesAndPlaces)
{
    clsRegEx form(L"^_23_ZIP[0-9a-f]+\\.tmp$", 0);
    for (const wchar_t* extension : {L"tmp", L".tmp"})
    {
        const String name = MakeTempFile(L"trelmo", L"ZIP", extension, nullptr);
        EXPECT_TRUE(form.Match(GetPathName(name), nullptr)) << ::testing::PrintToString(name.Text());
        EXPECT_STREQ(
            GetPathDirectory(name).Text(), (GetTempFolder(true) + L"trelmo" + String(&PATH_SEPARATOR, 0, 1)).Text());
        EXPECT_TRUE(DeleteFileW(name));
    }
}

TEST(TempFiles, VanishWithTheirHandle)
{
    clsGenericHandleObjectAutoRelease holder;
    const String name = MakeTempFile(L"trelmo", L"x", L"tmp", &holder);
    EXPECT_TRUE(Exists(name));
    holder.Release();
    EXPECT_FALSE(Exists(name));

    clsFileRWTemp file;
    EXPECT_EQ(file.clsFile::Write("abc", 3), 3);
}

TEST(TempFiles, FallIntoTheTempFolderWithoutASubfolder)
{
    const String obstacle = temp.Make(L"obstacle", "");
    const String name = MakeTempFile(L"obstacle\\below", L"x", L"tmp", nullptr);
    EXPECT_STREQ(GetPathDirectory(name).Text(), GetTempFolder(true).Text());
    EXPECT_TRUE(DeleteFileW(name));
    EXPECT_TRUE(DeleteFileW(obstacle));
}

TEST(TempFiles, StaleOnesAreTakenOver)
{
    DeleteFileW(MakeTempFile(L"trelmo", L"x", L"tmp", nullptr)); // creates the folder
    MakeOldFile(NumberedFile(L"10"), 6);
    MakeOldFile(NumberedFile(L"11"), 8);
    MakeOldFile(NumberedFile(L"12"), 8);

    // Six days are too recent.
    nextNumber = 0x10;
    clsGenericHandleObjectAutoRelease holder;
    EXPECT_STREQ(MakeTempFile(L"trelmo", L"old", L"tmp", &holder, CountedNumber).Text(), NumberedFile(L"11"));
    LARGE_INTEGER size{};
    EXPECT_TRUE(GetFileSizeEx(holder.Get(), &size));
    EXPECT_EQ(size.QuadPart, 0);

    // A file in use is left alone, and without a holder no file is reused.
    nextNumber = 0x11;
    const String fresh = MakeTempFile(L"trelmo", L"old", L"tmp", nullptr, CountedNumber);
    EXPECT_STREQ(fresh.Text(), NumberedFile(L"13").Text());
    holder.Release();
    EXPECT_FALSE(Exists(NumberedFile(L"11")));
    for (const wchar_t* digits : {L"10", L"12", L"13"})
        EXPECT_TRUE(DeleteFileW(NumberedFile(digits)));
}
