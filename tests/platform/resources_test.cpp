#include <windows.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string_view>

namespace
{

// The language block 7 of the string table in resources_test.rc is read from.
HRSRC FindBlock(int block, WORD language)
{
    return FindResourceExW(nullptr, reinterpret_cast<LPCWSTR>(RT_STRING), MAKEINTRESOURCEW(block), language);
}

WORD FirstLength(HRSRC found)
{
    const HGLOBAL loaded = LoadResource(nullptr, found);
    return loaded ? *static_cast<const WORD*>(LockResource(loaded)) : 0xFFFF;
}

TEST(ResourcesTest, FindsALanguageOrTheSameWithoutARegion)
{
    const HRSRC english = FindBlock(7, 0x0009);
    ASSERT_NE(english, nullptr);
    EXPECT_EQ(FirstLength(english), 3);
    EXPECT_EQ(FindBlock(7, 0x0809), english); // British English asks for English in the end
    const HRSRC belgian = FindBlock(7, 0x080C);
    ASSERT_NE(belgian, nullptr);
    EXPECT_EQ(FirstLength(belgian), 5);
    EXPECT_NE(FindBlock(7, 0), nullptr);
    EXPECT_NE(FindResourceW(nullptr, MAKEINTRESOURCEW(7), reinterpret_cast<LPCWSTR>(RT_STRING)), nullptr);
    EXPECT_NE(FindResourceW(nullptr, L"#7", L"#6"), nullptr);
}

TEST(ResourcesTest, ErrorTellsWhatIsMissing)
{
    EXPECT_EQ(FindResourceW(nullptr, MAKEINTRESOURCEW(7), L"NOTYPE"), nullptr);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_RESOURCE_TYPE_NOT_FOUND});
    EXPECT_EQ(FindBlock(99, 0), nullptr);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_RESOURCE_NAME_NOT_FOUND});
    EXPECT_EQ(FindBlock(7, 0x0411), nullptr);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_RESOURCE_LANG_NOT_FOUND});
}

TEST(ResourcesTest, NamesAreComparedWithoutCase)
{
    const HRSRC found = FindResourceW(nullptr, L"payload", reinterpret_cast<LPCWSTR>(RT_RCDATA));
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(SizeofResource(nullptr, found), 5u);
    EXPECT_EQ(std::memcmp(LockResource(LoadResource(nullptr, found)), "12345", 5), 0);
}

TEST(ResourcesTest, LoadStringCutsAndTerminates)
{
    wchar_t buffer[8] = L"#######";
    EXPECT_EQ(LoadStringW(nullptr, 112, buffer, 8), 7);
    EXPECT_STREQ(buffer, L"English");
    EXPECT_EQ(LoadStringW(nullptr, 97, buffer, 8), 0); // an empty entry
    EXPECT_EQ(LoadStringW(nullptr, 9999, buffer, 8), 0);
    const wchar_t* text = nullptr;
    ASSERT_EQ(LoadStringW(nullptr, 112, reinterpret_cast<LPWSTR>(&text), 0), 12);
    EXPECT_EQ(std::wstring_view(text, 12), L"English only");
}

} // namespace
