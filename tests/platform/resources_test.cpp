// Resources of a module: finding, languages, string tables, enumeration, version blocks.
#include <gtest/gtest.h>

#include <windows.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace
{

using namespace std::string_view_literals;

constexpr WORD GERMAN = 0x407;
constexpr WORD GERMAN_ALONE = 0x007;
constexpr WORD AUSTRIAN = 0xc07;
constexpr WORD ENGLISH = 0x409;
constexpr WORD FRENCH = 0x40c;
constexpr WORD CANADIAN_FRENCH = 0xc0c;

std::string Ascii(std::wstring_view text)
{
    std::string ascii;
    for (const wchar_t unit : text)
    {
        char cell[8];
        std::snprintf(cell, sizeof cell, unit < 0x80 ? "%c" : "<%x>", unit);
        ascii += cell;
    }
    return ascii;
}

std::string KeyText(LPCWSTR key)
{
    return IS_INTRESOURCE(key) ? std::to_string(reinterpret_cast<UINT_PTR>(key)) : Ascii(key);
}

std::string BytesOf(HRSRC resource)
{
    const HGLOBAL loaded = LoadResource(nullptr, resource);
    const auto bytes = static_cast<const char*>(LockResource(loaded));
    return {bytes, SizeofResource(nullptr, resource)};
}

std::string Bytes(LPCWSTR type, LPCWSTR name)
{
    SetLastError(ERROR_SUCCESS);
    const HRSRC resource = FindResourceW(nullptr, name, type);
    return resource == nullptr ? "error " + std::to_string(GetLastError()) : BytesOf(resource);
}

TEST(Resources, ByNumberAndByName)
{
    EXPECT_EQ(Bytes(RT_RCDATA, L"Named"), "abc\0\x34\x12"sv);
    EXPECT_EQ(Bytes(L"#10", L"nAmEd"), "abc\0\x34\x12"sv);
    EXPECT_EQ(Bytes(RT_RCDATA, MAKEINTRESOURCEW(7)), "\1\0\0\0\2\0\0\0"sv);
    EXPECT_EQ(Bytes(RT_RCDATA, L"#7"), "\1\0\0\0\2\0\0\0"sv);
    EXPECT_EQ(Bytes(L"mytype", L"first"), "x");
    EXPECT_EQ(Bytes(L"MYTYPE", L"#3"), "yy");
    EXPECT_EQ(Bytes(MAKEINTRESOURCEW(300), MAKEINTRESOURCEW(5)), "odd");

    EXPECT_EQ(Bytes(RT_RCDATA, L"missing"), "error 1814");
    EXPECT_EQ(Bytes(L"missing", L"#3"), "error 1813");
    EXPECT_EQ(Bytes(L"#junk", L"#3"), "error 1813");
}

// The language of the block that was chosen, told by its first text; or the error.
std::string Chosen(int id, WORD language)
{
    SetLastError(ERROR_SUCCESS);
    const HRSRC resource = FindResourceExW(nullptr, RT_STRING, MAKEINTRESOURCEW(id / 16 + 1), language);
    if (resource == nullptr)
        return "error " + std::to_string(GetLastError());
    const std::string block = BytesOf(resource);
    std::vector<wchar_t> units(block.size() / sizeof(wchar_t));
    std::memcpy(units.data(), block.data(), units.size() * sizeof(wchar_t));
    std::size_t at = 0;
    for (int i = 0; i < id % 16; ++i)
        at += 1 + std::size_t{units.at(at)};
    return Ascii({units.data() + at + 1, units.at(at)});
}

TEST(Resources, Languages)
{
    struct Case
    {
        int id;
        WORD language;
        const char* text;
    };
    constexpr Case CASES[] = {{100, ENGLISH, "english"}, {100, GERMAN, "deutsch <e4><f6><fc> <20ac>"},
        {100, GERMAN_ALONE, "error 1815"}, {200, GERMAN, "german of no region"}, {200, AUSTRIAN, "german of no region"},
        {200, ENGLISH, "error 1815"}, {300, CANADIAN_FRENCH, "error 1815"}, {400, GERMAN, "of no language"},
        // The defaults take what there is.
        {300, LANG_NEUTRAL, "french"}, {300, LANG_USER_DEFAULT, "french"}, {500, ENGLISH, "error 1814"}};
    for (const Case& row : CASES)
        EXPECT_EQ(Chosen(row.id, row.language), row.text) << row.id << ' ' << row.language;
}

std::string Load(UINT id)
{
    wchar_t buffer[40];
    SetLastError(ERROR_SUCCESS);
    const int length = LoadStringW(nullptr, id, buffer, 40);
    if (length == 0 && GetLastError() != ERROR_SUCCESS)
        return "error " + std::to_string(GetLastError());
    EXPECT_EQ(buffer[length], 0);
    return Ascii({buffer, static_cast<std::size_t>(length)});
}

TEST(Resources, Strings)
{
    EXPECT_EQ(Load(101), "only english");
    EXPECT_EQ(Load(102), "");
    EXPECT_EQ(Load(116), "first behind a gap");
    EXPECT_EQ(Load(5000), "error 1814");

    wchar_t buffer[] = L"########";
    EXPECT_EQ(LoadStringW(nullptr, 101, buffer, 5), 4);
    EXPECT_EQ(buffer, L"only"sv);
    EXPECT_EQ(buffer[5], L'#');
    const wchar_t* inPlace = nullptr;
    EXPECT_EQ(LoadStringW(nullptr, 101, reinterpret_cast<LPWSTR>(&inPlace), 0), 12);
    EXPECT_EQ(std::wstring_view(inPlace, 12), L"only english");
    EXPECT_EQ(LoadStringW(nullptr, 101, nullptr, 5), 0);
}

// All resources as "type/name/language", in the order in which they are told.
BOOL CALLBACK AddLanguage(HMODULE, LPCWSTR type, LPCWSTR name, WORD language, LONG_PTR listing)
{
    char cell[16];
    std::snprintf(cell, sizeof cell, "/%x\n", language);
    *reinterpret_cast<std::string*>(listing) += KeyText(type) + '/' + KeyText(name) + cell;
    return TRUE;
}

BOOL CALLBACK AddName(HMODULE module, LPCWSTR type, LPWSTR name, LONG_PTR listing)
{
    return EnumResourceLanguagesW(module, type, name, AddLanguage, listing);
}

// Stops behind the type with the number 10.
BOOL CALLBACK AddType(HMODULE module, LPWSTR type, LONG_PTR listing)
{
    EXPECT_TRUE(EnumResourceNamesW(module, type, AddName, listing));
    return type != RT_RCDATA;
}

TEST(Resources, Enumeration)
{
    std::string some;
    const auto listing = reinterpret_cast<LONG_PTR>(&some);
    EXPECT_FALSE(EnumResourceTypesW(nullptr, AddType, listing));
    EXPECT_EQ(some, "MYTYPE/FIRST/0\nMYTYPE/3/0\n"
                    "6/7/407\n6/7/409\n6/8/409\n6/13/7\n6/19/40c\n6/26/0\n"
                    "10/NAMED/0\n10/7/0\n");
    EXPECT_FALSE(EnumResourceNamesW(nullptr, MAKEINTRESOURCEW(99), AddName, listing));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_RESOURCE_TYPE_NOT_FOUND});
    EXPECT_FALSE(EnumResourceLanguagesW(nullptr, RT_STRING, MAKEINTRESOURCEW(99), AddLanguage, listing));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_RESOURCE_NAME_NOT_FOUND});
}

class VersionBlock : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_NE(GetModuleFileNameW(nullptr, _path, MAX_PATH), 0u);
        DWORD handle = 1;
        const DWORD size = GetFileVersionInfoSizeW(_path, &handle);
        ASSERT_GT(size, 100u);
        EXPECT_EQ(handle, 0u);
        _block.resize(size);
        ASSERT_TRUE(GetFileVersionInfoW(_path, 0, size, _block.data()));
    }

    // A text with its length, or "error N".
    std::string Text(const wchar_t* path)
    {
        void* value = nullptr;
        UINT length = 0;
        SetLastError(ERROR_SUCCESS);
        if (!VerQueryValueW(_block.data(), path, &value, &length))
            return "error " + std::to_string(GetLastError());
        return Ascii(static_cast<const wchar_t*>(value)) + '|' + std::to_string(length);
    }

    wchar_t _path[MAX_PATH] = {};
    std::vector<char> _block;
};

TEST_F(VersionBlock, Values)
{
    EXPECT_EQ(Text(L"\\StringFileInfo\\040904b0\\CompanyName"), "A maker of tests|17");
    EXPECT_EQ(Text(L"\\stringfileinfo\\040904B0\\FILEVERSION"), "23.2.0.1|9");
    EXPECT_EQ(Text(L"\\StringFileInfo\\040904b0\\Build"), "|1");
    EXPECT_EQ(Text(L"\\StringFileInfo\\040904b0\\Missing"), "error 1813");

    void* value = nullptr;
    UINT length = 0;
    ASSERT_TRUE(VerQueryValueW(_block.data(), L"\\", &value, &length));
    ASSERT_EQ(length, sizeof(VS_FIXEDFILEINFO));
    const auto fixed = static_cast<const VS_FIXEDFILEINFO*>(value);
    EXPECT_EQ(fixed->dwSignature, DWORD{VS_FFI_SIGNATURE});
    EXPECT_EQ(fixed->dwFileVersionMS, 0x170002u);
    EXPECT_EQ(fixed->dwFileVersionLS, 1u);
    ASSERT_TRUE(VerQueryValueW(_block.data(), L"\\VarFileInfo\\Translation", &value, &length));
    ASSERT_EQ(length, 4u);
    EXPECT_EQ(std::memcmp(value, "\x09\x04\xb0\x04", 4), 0);
}

#ifndef _WIN32
// Cut anywhere, or with any number in it changed, a block gives only what lies in it. The system trusts a block.
TEST_F(VersionBlock, DamageStaysInTheBlock)
{
    const wchar_t* const paths[] = {L"\\", L"\\StringFileInfo\\040904b0\\CompanyName", L"\\VarFileInfo\\Translation"};
    const auto check = [&](const std::vector<char>& damaged)
    {
        for (const wchar_t* path : paths)
        {
            void* value = nullptr;
            UINT length = 0;
            if (!VerQueryValueW(damaged.data(), path, &value, &length))
                continue;
            const auto begin = static_cast<const char*>(value);
            ASSERT_GE(begin, damaged.data());
            ASSERT_LE(begin + length, damaged.data() + damaged.size());
        }
    };
    for (DWORD size = 2; size < _block.size(); ++size)
    {
        std::vector<char> cut(size);
        ASSERT_TRUE(GetFileVersionInfoW(_path, 0, size, cut.data()));
        check(cut);
    }
    for (std::size_t at = 2; at < _block.size(); ++at)
    {
        for (const char byte : {'\0', '\x7f', '\xff'})
        {
            std::vector<char> changed = _block;
            changed[at] = byte;
            check(changed);
        }
    }
}
#endif

} // namespace
