// Resources of a module: look-up, languages, string tables, enumeration, version blocks.
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

constexpr WORD kGerman = 0x407;
constexpr WORD kGermanAlone = 0x007;
constexpr WORD kAustrian = 0xc07;
constexpr WORD kEnglish = 0x409;
constexpr WORD kFrench = 0x40c;
constexpr WORD kCanadianFrench = 0xc0c;

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

// Returns the language of the selected block, identified by its first text, or the error.
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
    constexpr Case kCases[] = {{100, kEnglish, "english"}, {100, kGerman, "deutsch <e4><f6><fc> <20ac>"},
        {100, kGermanAlone, "error 1815"}, {200, kGerman, "german of no region"},
        {200, kAustrian, "german of no region"}, {200, kEnglish, "error 1815"}, {300, kCanadianFrench, "error 1815"},
        {400, kGerman, "of no language"},
        // Default languages accept whatever exists.
        {300, LANG_NEUTRAL, "french"}, {300, LANG_USER_DEFAULT, "french"}, {500, kEnglish, "error 1814"}};
    for (const Case& row : kCases)
        EXPECT_EQ(Chosen(row.id, row.language), row.text) << row.id << ' ' << row.language;
}

#ifndef _WIN32
// Truncated anywhere, or with any number in it changed, a block never makes the layer read outside it. The system
// trusts the block.
TEST(VersionBlock, DamageStaysInTheBlock)
{
    wchar_t program[MAX_PATH];
    ASSERT_NE(GetModuleFileNameW(nullptr, program, MAX_PATH), 0u);
    DWORD handle = 1;
    std::vector<char> block(GetFileVersionInfoSizeW(program, &handle));
    ASSERT_GT(block.size(), 100u);
    ASSERT_TRUE(GetFileVersionInfoW(program, 0, static_cast<DWORD>(block.size()), block.data()));
    const auto countFound = [](const std::vector<char>& damaged)
    {
        int found = 0;
        for (const wchar_t* path : {L"\\", L"\\stringfileinfo\\040904B0\\CompanyName", L"\\VarFileInfo\\Translation"})
        {
            void* value = const_cast<char*>(damaged.data());
            UINT length = 0;
            found += VerQueryValueW(damaged.data(), path, &value, &length);
            const auto begin = static_cast<const char*>(value);
            EXPECT_TRUE(begin >= damaged.data() && begin + length <= damaged.data() + damaged.size());
        }
        return found;
    };
    EXPECT_EQ(countFound(block), 3);
    for (std::size_t at = 2; at < block.size(); ++at)
    {
        std::vector<char> damaged(at);
        ASSERT_TRUE(GetFileVersionInfoW(program, 0, static_cast<DWORD>(at), damaged.data()));
        countFound(damaged);
        for (const char byte : {'\0', '\x7f', '\xff'})
        {
            damaged = block;
            damaged[at] = byte;
            countFound(damaged);
        }
    }
}
#endif

} // namespace
