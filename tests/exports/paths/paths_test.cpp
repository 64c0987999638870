#include <qxut23/paths.h>

#include <gtest/gtest.h>

#include <windows.h>

#include <oleauto.h>

#include <cstdint>
#include <cstring>

TEST(PathExports, ApartAndTogether)
{
    QXWCHAR drive[3], directory[256], name[256], extension[256], path[260];
    EXPECT_EQ(UtilSplitpath(L"c:\\a\\b.c", drive, directory, name, extension), 0);
    EXPECT_STREQ(drive, L"c:");
    EXPECT_STREQ(directory, L"\\a\\");
    EXPECT_STREQ(name, L"b");
    EXPECT_STREQ(extension, L".c");
    EXPECT_EQ(UtilMergepath(path, drive, directory, name, extension), 0);
    EXPECT_STREQ(path, L"c:\\a\\b.c");
    EXPECT_EQ(UtilSplitpath(L"/x/y.z", nullptr, nullptr, name, nullptr), 0);
    EXPECT_STREQ(name, L"y");
    EXPECT_NE(UtilSplitpath(nullptr, drive, directory, name, extension), 0);
    EXPECT_STREQ(name, L"");
    EXPECT_NE(UtilMergepath(nullptr, drive, directory, name, extension), 0);
}

TEST(PathExports, FullPath)
{
    QXWCHAR folder[260], full[260], small[2] = L"x";
    GetFullPathNameW(L".", 260, folder, nullptr);
    EXPECT_EQ(UtilFullpath(L"a/../b", full, 260), full);
    EXPECT_EQ(std::wcsncmp(full, folder, std::wcslen(folder)), 0);
    EXPECT_STREQ(full + std::wcslen(full) - 1, L"b");
    EXPECT_EQ(UtilFullpath(L"name", small, 2), nullptr);
    EXPECT_EQ(UtilFullpath(L"name", nullptr, 0), nullptr);
}

TEST(PathExports, FileSystem)
{
    QXUTFSINFO info;
    std::memset(&info, 0x55, sizeof info);
    info.size = 24;
    EXPECT_EQ(UtilGetFSInfo(nullptr, &info), 64u);
    EXPECT_EQ(info.maxPath, 0x55555555u);
    EXPECT_EQ(UtilGetFSInfo(nullptr, nullptr), 64u);
    info.size = 20;
    const std::uint32_t flags = UtilGetFSInfo(nullptr, &info);
    DWORD ofSystem = 0;
    ASSERT_TRUE(GetVolumeInformationW(nullptr, nullptr, 0, nullptr, nullptr, &ofSystem, nullptr, 0));
    EXPECT_EQ(flags, ofSystem);
    EXPECT_EQ(info.maxPath, 260u);
    EXPECT_EQ(info.driveLength, 3u);
    EXPECT_GE(info.maxNameLength, 13u);
    EXPECT_EQ(info.flags & (QXUT_FS_CASE_PRESERVED | QXUT_FS_LONG_NAMES), 10u);
    EXPECT_EQ(UtilGetFSInfo(L"/no such root/", &info), 0u);
    EXPECT_EQ(info.flags, 0u);
}

TEST(PathExports, Tokens)
{
    SetEnvironmentVariableW(L"QXUT_TEST_TOKEN", L"value");
    BSTR text = nullptr;
    EXPECT_EQ(UtilExpandDefaultTokensOfFolderPath(L"%QXUT_TEST_TOKEN%\\x", &text), 1);
    EXPECT_STREQ(text, L"value\\x");
    EXPECT_EQ(UtilExpandDefaultTokensOfFolderPath(L"y", &text), 1); // replaces the string
    EXPECT_EQ(UtilExpandDefaultTokensOfFolderPath(L"y", nullptr), 1);
    EXPECT_EQ(UtilExpandDefaultTokensOfFolderPath(nullptr, &text), 0);
    EXPECT_STREQ(text, L"y");
    SysFreeString(text);
    SetEnvironmentVariableW(L"QXUT_TEST_TOKEN", nullptr);
}
