#include "files/paths.h"

#include "files/file_finder.h"
#include "files/folder_tokens.h"
#include "files/path_separator.h"
#include "unit/files/own_temp_folder.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

using namespace qx;
using namespace qxtest;

namespace
{

constexpr wchar_t shellFolders[] = L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";

// A value among the user's shell folders for the span of a test.
class ShellFolder
{
public:
    ShellFolder(const wchar_t* name, const wchar_t* folder) : _name(name)
    {
        const auto size = static_cast<DWORD>((String(folder).Length() + 1) * sizeof(wchar_t));
        RegCreateKeyExW(HKEY_CURRENT_USER, shellFolders, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &_key, nullptr);
        RegSetValueExW(_key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(folder), size);
    }
    ShellFolder(const ShellFolder&) = delete;
    ShellFolder& operator=(const ShellFolder&) = delete;
    ~ShellFolder()
    {
        RegDeleteValueW(_key, _name);
        RegCloseKey(_key);
    }

private:
    HKEY _key = nullptr;
    const wchar_t* _name;
};

} // namespace

TEST(Paths, Parts)
{
    const struct
    {
        const wchar_t *path, *directory, *stem, *name, *extension;
    } cases[] = {{L"/a/b.c/name.tar.gz", L"/a/b.c/", L"name.tar", L"name.tar.gz", L".gz"},
        {L"c:\\x\\name", L"c:\\x\\", L"name", L"name", L""}, {L"name.txt", L"", L"name", L"name.txt", L".txt"},
        {L"/a/b/", L"/a/b/", L"", L"", L""}, {L"\\\\server\\share\\f.e", L"\\\\server\\share\\", L"f", L"f.e", L".e"},
        {L"", L"", L"", L"", L""}, {L".hidden", L"", L"", L".hidden", L".hidden"}};
    for (const auto& c : cases)
    {
        EXPECT_STREQ(GetPathDirectory(c.path).Text(), c.directory);
        EXPECT_STREQ(GetPathStem(c.path).Text(), c.stem);
        EXPECT_STREQ(GetPathName(c.path).Text(), c.name);
        EXPECT_STREQ(GetPathExtension(c.path).Text(), c.extension);
    }
    // What doesn't fit gives nothing, and overruns nothing.
    String longName;
    longName.Fill(L'n', 5000);
    EXPECT_STREQ(GetPathName(longName).Text(), L"");
}

TEST(Paths, Classes)
{
    const String folder = TempFolderOfTests().Path();
    const String file = TempFolderOfTests().Make(L"classified", "");
    const struct
    {
        String path;
        PathClass expected;
    } cases[] = {{L"LPT1:", PathClass::printerPort}, {L"lpt12:", PathClass::printerPort},
        {L"COM3:", PathClass::serialPort}, {L"LPT:", PathClass::missing}, {L"usb:abc", PathClass::usb},
        {folder, PathClass::folder}, {file, PathClass::file}, {String(L"FILE:") + file, PathClass::file},
        {String(L"file:") + folder, PathClass::folder}, {file + L".no", PathClass::missing},
        {L"FILE:", PathClass::missing}};
    for (const auto& c : cases)
        EXPECT_EQ(ClassifyPath(c.path), c.expected) << ::testing::PrintToString(c.path.Text());
    EXPECT_TRUE(DeleteFileW(file));
}

TEST(Paths, NormalForm)
{
    const String folder = TempFolderOfTests().Path();
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
    SetEnvironmentVariableW(L"QXUT_TEST_TOKEN", L"value");
    const ShellFolder shellFolder(L"Qxut My Folder 1", L"/shell folder");
    String longValue;
    longValue.Fill(L'v', 700);
    SetEnvironmentVariableW(L"QXUT_TEST_LONG", longValue);
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
    SetEnvironmentVariableW(L"QXUT_TEST_TOKEN", nullptr);
    SetEnvironmentVariableW(L"QXUT_TEST_LONG", nullptr);
}

TEST(Paths, ListedAndLookedAt)
{
    const TempFolder temp;
    const String folder = temp.Path();
    CreateDirectoryW(folder + L"/sub", nullptr);
    temp.Make(L"one.txt", "1");
    temp.Make(L"two.txt", "2");
    temp.Make(L"three.dat", "3");

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
    EXPECT_EQ(listed(L"/none*", false).size(), 0u);

    WIN32_FILE_ATTRIBUTE_DATA data{};
    EXPECT_TRUE(GetFileData(folder, data));
    EXPECT_NE(data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY, 0u);
    EXPECT_FALSE(GetFileData(folder + L"/missing", data));
    EXPECT_FALSE(GetFileData(folder + L"/missing/too", data));

    EXPECT_TRUE(RemoveDirectoryW(folder + L"/sub"));
}
