#include "files/paths.h"

#include "files/file_finder.h"
#include "files/file_time.h"
#include "files/folder_tokens.h"
#include "files/path_separator.h"
#include "files/temp_files.h"
#include "support/filled.h"
#include "support/own_settings.h"
#include "support/variable.h"
#include "unit/files/own_temp_folder.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <set>
#include <string>
#include <tuple>

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

String NumberedFile(const wchar_t* digits)
{
    return GetTempFolder(true) + L"trelmo" + String(&PATH_SEPARATOR, 0, 1) + L"_23_old" + digits + L".tmp";
}

} // namespace

TEST(Paths, Parts)
{
    const std::tuple<const wchar_t*, const wchar_t*, const wchar_t*, const wchar_t*, const wchar_t*> cases[] = {
        {L"/a/b.c/name.tar.gz", L"/a/b.c/", L"name.tar", L"name.tar.gz", L".gz"},
        {L"c:\\x\\name", L"c:\\x\\", L"name", L"name", L""}, {L"/a/b/", L"/a/b/", L"", L"", L""},
        {L"\\\\server\\share\\f.e", L"\\\\server\\share\\", L"f", L"f.e", L".e"}, {L"", L"", L"", L"", L""},
        {L".hidden", L"", L"", L".hidden", L".hidden"}, {L"a/b\\c", L"a/b\\", L"c", L"c", L""},
        {L"a.b/c", L"a.b/", L"c", L"c", L""}, {L"c:x", L"c:", L"x", L"x", L""}, {L"cc:x", L"", L"cc:x", L"cc:x", L""},
        {L"ab/:c", L"ab/", L":c", L":c", L""}, {L"a/..", L"a/", L".", L"..", L"."}};
    for (const auto& [path, directory, stem, name, extension] : cases)
    {
        EXPECT_STREQ(GetPathDirectory(path).Text(), directory);
        EXPECT_STREQ(GetPathStem(path).Text(), stem);
        EXPECT_STREQ(GetPathName(path).Text(), name);
        EXPECT_STREQ(GetPathExtension(path).Text(), extension);
    }
    // A text that doesn't fit produces an empty result and no overrun.
    EXPECT_STREQ(GetPathName(Filled(L'n', 5000)).Text(), L"");
}

TEST(Paths, Classes)
{
    const String folder = temp.Path(), file = temp.Make(L"classified", "");
    const std::pair<String, PathClass> cases[] = {{L"lpt12:", PathClass::PrinterPort},
        {L"COM3:", PathClass::SerialPort}, {L"LPT:", PathClass::Missing}, {L"usb:abc", PathClass::Usb},
        {folder, PathClass::Folder}, {String(L"FILE:") + file, PathClass::File},
        {String(L"file:") + folder, PathClass::Folder}, {file + L".no", PathClass::Missing},
        {L"FILE:", PathClass::Missing}};
    for (const auto& [path, expected] : cases)
        EXPECT_EQ(ClassifyPath(path), expected) << ::testing::PrintToString(path.Text());
}

TEST(Paths, NormalForm)
{
    const String folder = temp.Path(), full = NormalizePath(folder), separator(&PATH_SEPARATOR, 0, 1);
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
    const String longValue = Filled(L'v', 700);
    const Variable token(L"QXUT_TEST_TOKEN", L"value"), longToken(L"QXUT_TEST_LONG", longValue);
    const std::pair<const wchar_t*, String> cases[] = {{L"plain", L"plain"}, {L"%QXUT_TEST_TOKEN%/x", L"value/x"},
        {L"%Qxut My Folder 1%/x", L"/shell folder/x"}, {L"%qxut MY folder 1%", L"/shell folder"},
        {L"%NOSUCHTHING%/x", L"%NOSUCHTHING%/x"}, {L"%QXUT_TEST_LONG%%QXUT_TEST_TOKEN%", longValue + L"value"},
        {L"%", L"%"}, {L"%%", L"%%"}, {L"", L""}};
    for (const auto& [text, expanded] : cases)
        EXPECT_STREQ(ExpandFolderTokens(text).Text(), expanded.Text());
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
}

TEST(TempFiles, FallIntoTheTempFolderWithoutASubfolder)
{
    temp.Make(L"obstacle", "");
    const String name = MakeTempFile(L"obstacle\\below", L"x", L"tmp", nullptr);
    EXPECT_STREQ(GetPathDirectory(name).Text(), GetTempFolder(true).Text());
}

TEST(TempFiles, StaleOnesAreTakenOver)
{
    DeleteFileW(MakeTempFile(L"trelmo", L"x", L"tmp", nullptr)); // creates the folder
    FILETIME now;
    GetSystemTimeAsFileTime(&now);
    for (const auto& [digits, days] : {std::pair(L"10", 6), {L"11", 8}, {L"12", 8}})
    {
        MakeFile(NumberedFile(digits), "old");
        SetWriteTime(NumberedFile(digits), FileTimeOf(UnitsOf(now) - 24 * kUnitsPerHour * static_cast<unsigned>(days)));
    }

    // A file that is six days old is too recent to be reused.
    nextNumber = 0x10;
    clsGenericHandleObjectAutoRelease holder;
    EXPECT_STREQ(MakeTempFile(L"trelmo", L"old", L"tmp", &holder, CountedNumber).Text(), NumberedFile(L"11"));
    LARGE_INTEGER size{};
    EXPECT_TRUE(GetFileSizeEx(holder.Get(), &size));
    EXPECT_EQ(size.QuadPart, 0);

    // A file in use is left alone, and without a holder no file is reused.
    nextNumber = 0x11;
    EXPECT_STREQ(MakeTempFile(L"trelmo", L"old", L"tmp", nullptr, CountedNumber), NumberedFile(L"13"));
    holder.Release();
    EXPECT_FALSE(Exists(NumberedFile(L"11")));
    for (const wchar_t* digits : {L"10", L"12", L"13"})
        EXPECT_TRUE(Exists(NumberedFile(digits)));
}
