// Code pages: decoding and encoding, damage, replacement characters, sizes and last errors.
#include "platform/system_support.h"

#include <algorithm>
#include <cstdio>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <vector>

namespace
{

using namespace std::string_view_literals;

template <class Unit>
std::string Hex(const std::vector<Unit>& units)
{
    std::string text;
    char cell[8];
    for (const Unit unit : units)
    {
        const auto value = static_cast<std::make_unsigned_t<Unit>>(unit);
        std::snprintf(cell, sizeof cell, sizeof(Unit) == 1 ? "%s%02x" : "%s%04x", text.empty() ? "" : " ", value);
        text += cell;
    }
    return text;
}

std::string ErrorText()
{
    return "error " + std::to_string(GetLastError());
}

// Returns the units as hexadecimal numbers, or "error N". Checks that the size returned by the measuring call is the
// size used.
std::string Decode(UINT page, std::string_view bytes, DWORD flags = 0)
{
    const int length = static_cast<int>(bytes.size());
    const int size = MultiByteToWideChar(page, flags, bytes.data(), length, nullptr, 0);
    if (size == 0)
        return GetLastError() == ERROR_SUCCESS ? "" : ErrorText();
    std::vector<wchar_t> units(static_cast<std::size_t>(size));
    EXPECT_EQ(MultiByteToWideChar(page, flags, bytes.data(), length, units.data(), size), size);
    return Hex(units);
}

std::string Encode(
    UINT page, std::wstring_view text, DWORD flags = 0, const char* defaultChar = nullptr, BOOL* used = nullptr)
{
    const int length = static_cast<int>(text.size());
    const int size = WideCharToMultiByte(page, flags, text.data(), length, nullptr, 0, defaultChar, used);
    if (size == 0)
        return ErrorText();
    std::vector<char> bytes(static_cast<std::size_t>(size));
    EXPECT_EQ(WideCharToMultiByte(page, flags, text.data(), length, bytes.data(), size, defaultChar, used), size);
    return Hex(bytes);
}

class CodePages : public testing::Test
{
protected:
    void SetUp() override { SetLastError(ERROR_SUCCESS); }
};

// A code page, a text, and the units that its conversion must produce.
template <class Text>
struct Case
{
    UINT page;
    Text text;
    const char* units;
};
using DecodeCase = Case<std::string_view>;
using EncodeCase = Case<std::wstring_view>;

constexpr DecodeCase kValid[] = {{1250, "\xb1\xb9\x8a", "00b1 0105 0160"},
    {1251, "\xcf\xf0\xe8\xa8", "041f 0440 0438 0401"},
    {1252, "\x80\x81\x8d\x9f\xe4\xff", "20ac 0081 008d 0178 00e4 00ff"}, {1253, "\xc1\xe1\xa2", "0391 03b1 0386"},
    {1254, "\xd0\xdd\xfe", "011e 0130 015f"}, {1255, "\xe0\xca\xc0", "05d0 05ba 05b0"},
    {1256, "\xc7\x81\xfd", "0627 067e 200e"}, {1257, "\xc0\xe0", "0104 0105"}, {1258, "\xcc\xec\xfe", "0300 0301 20ab"},
    {874, "\xa1\xdf\x80", "0e01 0e3f 20ac"}, {437, "\x80\xe6\xb3\x1a\x7f", "00c7 00b5 2502 001a 007f"},
    {850, "\x80\x84\xd5", "00c7 00e4 0131"}, {852, "\xaa\xa5\x1c", "00ac 0105 001c"},
    {866, "\x8f\xe0\xf0", "041f 0440 0401"}, {20127, "a\xe1", "0061 0061"}, {20866, "\xf0\xd2\xa3", "041f 0440 0451"},
    {28591, "\x80\xa4\xff", "0080 00a4 00ff"}, {28592, "\xb1", "0105"}, {28597, "\xa1\xa2\xc1", "02bd 02bc 0391"},
    {28598, "\xaf\xe0", "203e 05d0"}, {28605, "\xa4", "20ac"},
    {932, "a\x82\xa0\xb1\x81\x5f\x80\xfa\x40\xee\xef", "0061 3042 ff71 ff3c 0080 2170 2170"},
    {936, "\x80\xd6\xd0\xa6\xd9", "20ac 4e2d e78d"}, {949, "\xb0\xa1\xc8\xfe\x81\x41", "ac00 d79d ac02"},
    {950, "\xa4\xa4\xf9\xd6", "4e2d 7881"},
    {CP_UTF8, "a\0\xc3\xa4\xe2\x82\xac\xf0\x9f\x98\x80\xef\xbb\xbf"sv, "0061 0000 00e4 20ac d83d de00 feff"},
    {CP_UTF7, "a+AOQ-b+-+2D3eAA!+AOQ", "0061 00e4 0062 002b d83d de00 0021 00e4"}};

constexpr EncodeCase kWritten[] = {{1252, L"a\x20ac\x00e4\x0081", "61 80 e4 81"}, {1251, L"\x041f\x0401", "cf a8"},
    {1253, L"\xf8f9", "aa"}, {932, L"a\x3042\xff71\x2170\x30fb", "61 82 a0 b1 fa 40 81 45"},
    {936, L"\x4e2d\x20ac", "d6 d0 80"}, {949, L"\xac00", "b0 a1"}, {950, L"\x4e2d\x2550", "a4 a4 f9 f9"},
    {437, L"\x2502\x00b5", "b3 e6"},
    {CP_UTF8, L"a\x07ff\x0800\xd83d\xde00\xffff", "61 df bf e0 a0 80 f0 9f 98 80 ef bf bf"},
    {CP_UTF8, L"\xd800z\xdc00\xd83d", "ef bf bd 7a ef bf bd ef bf bd"}, {CP_UTF7, L"a\x00e4z", "61 2b 41 4f 51 2d 7a"},
    {CP_UTF7, L"+\x00e4!", "2b 2d 2b 41 4f 51 41 49 51 2d"},
    // Best fits.
    {1252, L"\x0100\x2212\xff21\x2032\x0110\x221e", "41 2d 41 27 d0 38"}, {1250, L"\x00c3\x00f1\x2039", "41 6e 8b"},
    {1251, L"\x00e9\x0141\x201a", "65 4c 82"}, {28591, L"\x201c\x2013\x2122\x0160", "22 2d 54 53"},
    {28595, L"\x0152\x2018", "4f 27"}, {932, L"\x00c4\x00e9", "41 65"}, {20127, L"\x00e4\x201c", "61 22"}};

#ifndef _WIN32
// Pages that Wine lacks.
constexpr DecodeCase kShifted[] = {{50220, "a\x1b$B$\"%\"\x1b(Bz", "0061 3042 30a2 007a"},
    {50220, "\x1b$@$\"\n\x1b(J\\\x1b(I1", "3042 000a 005c ff71"}, {50221, "\xb1\0161\0171", "ff71 ff71 0031"},
    {50222, "\0161\017\x1b$B$\"", "ff71 3042"}, {50225, "\x1b$)Ca\0160!\017z", "0061 ac00 007a"},
    {52936, "a~~~{VPND~}z~\n!", "0061 007e 4e2d 6587 007a 0021"},
    {51932, "a\xa4\xa2\x8e\xb1\xad\xa1", "0061 3042 ff71 2460"}, {51949, "\xb0\xa1z", "ac00 007a"},
    {20105, "a$~", "0061 00a4 203e"}, {20106, "@[\\]{|}~", "00a7 00c4 00d6 00dc 00e4 00f6 00fc 00df"},
    {20107, "$[\\]{|}~", "00a4 00c4 00d6 00c5 00e4 00f6 00e5 203e"},
    {20108, "$[\\]{|}~", "0024 00c6 00d8 00c5 00e6 00f8 00e5 203e"},
    // Damage: an unknown escape, half a character, an unterminated shift.
    {50220, "\x1b$Z\x1b$B$", "001b 0024 005a 30fb"}, {52936, "~{VP", "4e2d"}, {51932, "\xa4", "30fb"}};

constexpr EncodeCase kShiftedWritten[] = {{50220, L"a\x3042z", "61 1b 24 42 24 22 1b 28 42 7a"},
    {50220, L"\xff76\xff9e\xff71", "1b 24 42 25 2c 25 22 1b 28 42"}, // half-width kana become full-width
    {50221, L"\xff71z", "1b 28 49 31 1b 28 42 7a"}, {50222, L"\xff71", "0e 31 1b 28 42"},
    {50225, L"a\xac00z", "1b 24 29 43 61 0e 30 21 0f 7a"}, {52936, L"~\x4e2dz", "7e 7e 7e 7b 56 50 7e 7d 7a"},
    {51932, L"\x3042\xff71\x2170", "a4 a2 8e b1 fc f1"}, {51949, L"\xac00\x4e00", "b0 a1 ec e9"},
    {20106, L"\x00e4{", "7b 3f"}, {50220, L"\x3042\x1234", "1b 24 42 24 22 1b 28 42 3f"}};
#endif

TEST_F(CodePages, BytesMeanWhatThePageSays)
{
    for (const DecodeCase& row : kValid)
        for (const DWORD flags : {0, row.page == CP_UTF7 ? 0 : MB_ERR_INVALID_CHARS})
            EXPECT_EQ(Decode(row.page, row.text, flags), row.units) << row.page << ' ' << flags;
    for (const EncodeCase& row : kWritten)
        EXPECT_EQ(Encode(row.page, row.text), row.units) << row.page;
#ifndef _WIN32 // Wine lacks these pages
    for (const DecodeCase& row : kShifted)
        EXPECT_EQ(Decode(row.page, row.text), row.units) << row.page;
    for (const EncodeCase& row : kShiftedWritten)
        EXPECT_EQ(Encode(row.page, row.text), row.units) << row.page;
#endif
}

// The result of decoding damaged bytes leniently. With strict decoding they must be refused.
constexpr DecodeCase kDamaged[] = {{1253, "\xaa\xd2\xff", "f8f9 f8fa f8fb"}, {1255, "\xd9\xff", "f88d f896"},
    {1257, "\xa1\xa5", "f8fc f8fd"}, {874, "\xdb\xff", "f8c1 f8c8"}, {28596, "\xa1\xff", "f7c8 f7f4"},
    {28598, "\xa1\xfd", "f79c f7bf"}, {932, "\xa0\xfd\xff", "f8f0 f8f1 f8f3"}, {932, "\x81", "30fb"},
    {932, "\x81\x20z", "30fb 007a"}, {932, "\x81\0z"sv, "30fb 0000 007a"}, {936, "\x81", "003f"},
    {949, "\xc9\xa0z", "003f 007a"}, {CP_UTF8, "\x80\xbf", "fffd fffd"}, {CP_UTF8, "\xc0\x80", "fffd fffd"},
    {CP_UTF8, "\xc1\xbf\xc3\xa4", "fffd fffd 00e4"}, {CP_UTF8, "\xc3(", "fffd 0028"},
    {CP_UTF8, "\xe0\x80\x80", "fffd fffd"}, {CP_UTF8, "\xed\xa0\x80", "fffd fffd"}, {CP_UTF8, "\xe2\x82", "fffd"},
    {CP_UTF8, "\xe2\x82z", "fffd 007a"}, {CP_UTF8, "\xf0\x80\x80\x80", "fffd fffd fffd"},
    {CP_UTF8, "\xf0\x9f\x98", "fffd"}, {CP_UTF8, "\xf0\x90(\xbc", "fffd 0028 fffd"},
    {CP_UTF8, "\xf4\x90\x80\x80", "fffd fffd fffd"}, {CP_UTF8, "\xf8\x88\x80\x80\x80", "fffd fffd fffd fffd fffd"},
    {CP_UTF8, "\xff", "fffd"}};

TEST_F(CodePages, DamageIsReplacedOrRefused)
{
    for (const DecodeCase& row : kDamaged)
    {
        EXPECT_EQ(Decode(row.page, row.text), row.units) << row.page;
        EXPECT_EQ(Decode(row.page, row.text, MB_ERR_INVALID_CHARS), "error 1113") << row.page << ' ' << row.units;
    }
}

TEST_F(CodePages, ReplacementCharacters)
{
    constexpr std::tuple<UINT, std::wstring_view, DWORD, const char*, const char*, BOOL> kCases[] = {
        {1252, L"a\x4e2d", 0, nullptr, "61 3f", TRUE}, {1252, L"a?", 0, nullptr, "61 3f", FALSE},
        {1252, L"\x0100", 0, nullptr, "41", FALSE}, {1252, L"\x0100", WC_NO_BEST_FIT_CHARS, nullptr, "3f", TRUE},
        {1252, L"\xd83d\xde00", 0, nullptr, "3f 3f", TRUE}, {1252, L"\x4e2d", 0, "xy", "78", TRUE},
        {1252, L"\x4e2d", 0, "", "00", TRUE}, {932, L"\x1234z", 0, "\x81\x40", "81 40 7a", TRUE}};
    for (const auto& [page, text, flags, defaultChar, bytes, mustBeUsed] : kCases)
    {
        BOOL isUsed = FALSE;
        EXPECT_EQ(Encode(page, text, flags, defaultChar, &isUsed), bytes);
        EXPECT_EQ(isUsed, mustBeUsed) << bytes;
    }
    EXPECT_EQ(Encode(CP_UTF8, L"a\xd800", WC_ERR_INVALID_CHARS), "error 1113");
}

// Each character of a page, and each byte that represents one, survives a round trip.
TEST_F(CodePages, EveryCharacterOfAPageReturns)
{
    for (const UINT page : {437u, 737u, 775u, 850u, 852u, 855u, 857u, 862u, 866u, 874u, 932u, 936u, 949u, 950u, 1250u,
             1251u, 1252u, 1253u, 1254u, 1255u, 1256u, 1257u, 1258u, 20866u, 21866u, 28591u, 28592u, 28593u, 28594u,
             28595u, 28596u, 28597u, 28598u, 28599u, 28605u})
    {
        int characters = 0;
        for (unsigned value = 0; value < 0x10000; ++value)
        {
            const wchar_t unit = static_cast<wchar_t>(value);
            char bytes[4];
            wchar_t back[4] = {};
            BOOL used = FALSE;
            const int length = WideCharToMultiByte(page, WC_NO_BEST_FIT_CHARS, &unit, 1, bytes, 4, nullptr, &used);
            if (used)
                continue;
            ++characters;
            ASSERT_EQ(MultiByteToWideChar(page, 0, bytes, length, back, 4), 1) << page << ' ' << value;
            ASSERT_EQ(back[0], unit) << page;
        }
        EXPECT_GE(characters, 255) << page;
    }
}

TEST_F(CodePages, EveryScalarValueOfUtf8Returns)
{
    for (unsigned value = 0; value < 0x110000; value += value == 0xd7ff ? 0x801 : 1)
    {
        const bool isPair = value >= 0x10000;
        const wchar_t text[] = {static_cast<wchar_t>(isPair ? 0xd7c0 + (value >> 10) : value),
            static_cast<wchar_t>(0xdc00 + (value & 0x3ff))};
        const int length = isPair ? 2 : 1, size = 1 + (value >= 0x80) + (value >= 0x800) + isPair;
        char bytes[8];
        wchar_t back[4];
        ASSERT_EQ(WideCharToMultiByte(CP_UTF8, WC_ERR_INVALID_CHARS, text, length, bytes, 8, nullptr, nullptr), size);
        ASSERT_EQ(MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, bytes, size, back, 4), length) << value;
        ASSERT_TRUE(std::equal(text, text + length, back)) << value;
    }
}

// Long runs, with the first non-ASCII character at every alignment: ASCII runs are processed in machine words.
TEST_F(CodePages, RunsOfAsciiEndWhereTheyEnd)
{
    for (const UINT page : {1252u, 932u, static_cast<UINT>(CP_UTF8)})
        for (std::size_t run = 0; run < 40; ++run)
        {
            std::string bytes(run, 'x');
            bytes += page == 932 ? "\x82\xa0yz" : page == 1252 ? "\xe4yz" : "\xc3\xa4yz";
            std::vector<wchar_t> text(64);
            const int length = MultiByteToWideChar(page, 0, bytes.c_str(), -1, text.data(), 64);
            ASSERT_EQ(length, static_cast<int>(run + 4)) << page;
            EXPECT_EQ(text[run], page == 932 ? 0x3042 : 0xe4) << page << ' ' << run;
            EXPECT_EQ(text[run + 3], 0);
            std::vector<char> back(80, '#');
            ASSERT_EQ(WideCharToMultiByte(page, 0, text.data(), -1, back.data(), 80, nullptr, nullptr),
                static_cast<int>(bytes.size() + 1));
            EXPECT_EQ(back.data(), bytes) << page;
        }
}

TEST_F(CodePages, SizesAndBuffers)
{
    for (const UINT page : {1252u, 932u, static_cast<UINT>(CP_UTF8), static_cast<UINT>(CP_UTF7)})
    {
        wchar_t wide[] = L"#####";
        char narrow[] = "#####";
        EXPECT_EQ(MultiByteToWideChar(page, 0, "abc", -1, nullptr, 0), 4);
        EXPECT_EQ(MultiByteToWideChar(page, 0, "abc", 3, wide, 3), 3);
        EXPECT_EQ(wide, L"abc##"sv);
        EXPECT_EQ(WideCharToMultiByte(page, 0, L"abc", -1, nullptr, 0, nullptr, nullptr), 4);
        EXPECT_EQ(WideCharToMultiByte(page, 0, L"abc", 3, narrow, 3, nullptr, nullptr), 3);
        EXPECT_EQ(narrow, "abc##"sv);

        EXPECT_ERROR(ERROR_INSUFFICIENT_BUFFER, MultiByteToWideChar(page, 0, "abc", -1, wide, 3));
        EXPECT_ERROR(ERROR_INSUFFICIENT_BUFFER, WideCharToMultiByte(page, 0, L"abc", -1, narrow, 3, nullptr, nullptr));
        EXPECT_EQ(wide[3], L'#');
        EXPECT_EQ(narrow[3], '#');
        // A character of several bytes that fits only in part counts as not fitting.
        EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, L"\x20ac", 1, narrow, 2, nullptr, nullptr), 0);
        EXPECT_EQ(narrow[2], 'c');
    }
}

TEST_F(CodePages, ArgumentsAreChecked)
{
    wchar_t wide[8] = L"abc";
    char narrow[8];
    for (const auto& [hasText, length, hasBuffer, size] :
        {std::tuple(true, 0, true, 8), {false, 1, true, 8}, {true, 1, false, 8}, {true, 1, true, -1}})
    {
        SetLastError(ERROR_SUCCESS);
        MultiByteToWideChar(1252, 0, hasText ? "a" : nullptr, length, hasBuffer ? wide : nullptr, size);
        EXPECT_EQ(ErrorText(), "error 87") << length << ' ' << size;
        SetLastError(ERROR_SUCCESS);
        const wchar_t* const text = hasText ? L"a" : nullptr;
        WideCharToMultiByte(1252, 0, text, length, hasBuffer ? narrow : nullptr, size, nullptr, nullptr);
        EXPECT_EQ(ErrorText(), "error 87") << length << ' ' << size;
    }
    EXPECT_EQ(Decode(1252, "a", 0x100), "error 1004");
    EXPECT_EQ(Decode(CP_UTF7, "a", MB_ERR_INVALID_CHARS), "error 1004");
    EXPECT_EQ(Decode(1252, "a", MB_PRECOMPOSED), "0061");
    EXPECT_EQ(Encode(CP_UTF7, L"a", WC_NO_BEST_FIT_CHARS), "error 1004");
    // UTF-16 and the detection-only pages are not valid for these calls.
    for (const UINT page : {1200u, 1201u, 12000u, 50000u, 50932u, 50949u, 4u})
    {
        EXPECT_EQ(Decode(page, "a"), "error 87") << page;
        EXPECT_EQ(Encode(page, L"a"), "error 87") << page;
    }
#ifndef _WIN32 // Wine doesn't refuse flags that the documentation says are refused
    EXPECT_EQ(Decode(CP_UTF8, "a", MB_PRECOMPOSED), "error 1004");
    EXPECT_EQ(Encode(CP_UTF8, L"a", WC_NO_BEST_FIT_CHARS), "error 1004");
    EXPECT_EQ(Encode(1252, L"a", WC_ERR_INVALID_CHARS), "error 1004");
    EXPECT_EQ(Encode(CP_UTF8, L"a", 0, "?"), "error 87");
    BOOL used = FALSE;
    EXPECT_EQ(Encode(CP_UTF8, L"a", 0, nullptr, &used), "error 87");
    EXPECT_ERROR(ERROR_INVALID_PARAMETER, MultiByteToWideChar(1252, 0, reinterpret_cast<char*>(wide), 1, wide, 4));
#endif
}

} // namespace
