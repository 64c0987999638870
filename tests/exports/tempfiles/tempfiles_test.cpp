#include <qxut23/tempfiles.h>

#include <gtest/gtest.h>

#include <windows.h>

#include <oleauto.h>

#include <cstdint>
#include <string_view>

namespace
{

bool Exists(const wchar_t* name)
{
    return GetFileAttributesW(name) != INVALID_FILE_ATTRIBUTES;
}

TEST(TempFileExports, MadeAndHandedOver)
{
    BSTR name = nullptr;
    EXPECT_EQ(UtilTempFileMgrCreateFile(nullptr, L"tmp", 1, &name), 0);
    EXPECT_EQ(UtilTempFileMgrCreateFile(L"x", nullptr, 1, &name), 0);
    EXPECT_EQ(UtilTempFileMgrCreateFile(L"x", L"tmp", 1, nullptr), 0);
    EXPECT_EQ(name, nullptr);
    for (const std::uint32_t flags : {1u, 0xFFFFFFFEu})
    {
        ASSERT_EQ(UtilTempFileMgrCreateFile(L"pre", L".ext", flags, &name), 1);
        const std::wstring_view view(name);
        EXPECT_NE(view.find(L"trelmo"), view.npos);
        EXPECT_NE(view.find(L"_23_pre"), view.npos);
        EXPECT_EQ(view.substr(view.size() - 4), L".ext");
        EXPECT_TRUE(Exists(name));
        UtilTempFileMgrAdd(name); // without a manager, deleted immediately
        EXPECT_FALSE(Exists(name));
    }
    UtilTempFileMgrClose();
    UtilTempFileMgrOpen();
    ASSERT_EQ(UtilTempFileMgrCreateFile(L"pre", L"ext", 1, &name), 1);
    UtilTempFileMgrAdd(nullptr);
    UtilTempFileMgrAdd(name);
    EXPECT_TRUE(Exists(name));
    UtilTempFileMgrClose();
    EXPECT_FALSE(Exists(name));
    SysFreeString(name);
}

} // namespace
