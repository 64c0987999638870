#include "core/packing/base64.h"
#include "core/packing/blowfish.h"
#include "core/packing/pass_phrase.h"
#include "support/debug_lines.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cctype>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <new>
#include <random>
#include <string>
#include <tuple>
#include <vector>

using namespace qx;
using namespace qxtest;
using namespace std::string_literals;

namespace
{

using Bytes = std::vector<unsigned char>;

// A key of 8 bytes is used cyclically, so it is equivalent to its ninefold repetition, which has the full 72 bytes.
std::string FullKey(std::uint64_t eightBytes)
{
    std::string key;
    for (int i = 0; i < 72; ++i)
        key += static_cast<char>(eightBytes >> (56 - i % 8 * 8));
    return key;
}

std::string Decoded(const wchar_t* text)
{
    ByteBlock bytes;
    const std::size_t size = Base64DecodeToBytes(String(text), bytes);
    return {reinterpret_cast<const char*>(bytes.data()), size};
}

} // namespace

// The vectors by E. Young, published with the cipher, whose keys contain no zero byte.
TEST(Blowfish, PublishedVectors)
{
    constexpr std::tuple<std::uint64_t, std::uint64_t, std::uint64_t> kVectors[] = {
        {0xFFFFFFFFFFFFFFFF, 0xFFFFFFFFFFFFFFFF, 0x51866FD5B85ECB8A},
        {0x1111111111111111, 0x1111111111111111, 0x2466DD878B963C9D},
        {0xFEDCBA9876543210, 0x0123456789ABCDEF, 0x0ACEAB0FC6A0A28D},
        {0x7CA110454A1A6E57, 0x01A1D6D039776742, 0x59C68245EB05282B},
        {0x0131D9619DC1376E, 0x5CD54CA83DEF57DA, 0xB1B8CC0B250F09A0},
        {0x07A1133E4A0B2686, 0x0248D43806F67172, 0x1730E5778BEA1DA4}};
    for (const auto& [key, plain, encoded] : kVectors)
    {
        const clsBlowfish cipher(FullKey(key).c_str());
        // The words of a block are little-endian, the first one is the upper half.
        std::uint64_t block = std::rotl(plain, 32);
        cipher.Encode(reinterpret_cast<unsigned char*>(&block), sizeof block);
        EXPECT_EQ(std::rotl(block, 32), encoded) << key;
        cipher.Decode(reinterpret_cast<unsigned char*>(&block), sizeof block);
        EXPECT_EQ(std::rotl(block, 32), plain) << key;
    }
}

TEST(Blowfish, ShortKeysAreExtended)
{
    // The byte after "abc" is ("c" * 3 * 97) % 255 + 1 = 250; an empty key is preceded by zero.
    const auto sameCipher = [](const char* a, const char* b)
    {
        Bytes x(8, 1), y(8, 1);
        clsBlowfish(a).Encode(x.data(), x.size());
        clsBlowfish(b).Encode(y.data(), y.size());
        return x == y;
    };
    EXPECT_TRUE(sameCipher("abc", "abc\xFA"));
    EXPECT_FALSE(sameCipher("abc", "abc\xF9"));
    EXPECT_TRUE(sameCipher("", "\x01"));
    const std::string longest(72, 'x');
    EXPECT_TRUE(sameCipher(longest.c_str(), (longest + "y").c_str()));
    EXPECT_FALSE(sameCipher(longest.c_str(), longest.substr(0, 71).c_str()));
}

TEST(Blowfish, LastBlockOverlapsTheOthers)
{
    const clsBlowfish cipher("pass phrase");
    Bytes image(13);
    for (std::size_t i = 0; i < image.size(); ++i)
        image[i] = static_cast<unsigned char>(i);

    Bytes expected = image;
    cipher.Encode(expected.data() + 5, 8);
    cipher.Encode(expected.data(), 8);
    Bytes encoded = image;
    cipher.Encode(encoded.data(), encoded.size());
    EXPECT_EQ(encoded, expected);

    // Round trips of every length; less than a block is left unchanged.
    std::mt19937 random(2);
    for (std::size_t size = 0; size < 64; ++size)
    {
        Bytes data(size);
        for (auto& octet : data)
            octet = static_cast<unsigned char>(random());
        Bytes copy = data;
        cipher.Encode(copy.data(), size);
        EXPECT_EQ(copy == data, size < 8) << size;
        cipher.Decode(copy.data(), size);
        EXPECT_EQ(copy, data) << size;
    }
}

// The cipher is constructed in memory that outlives it.
TEST(Blowfish, LeavesNothingOfTheKeyBehind)
{
    alignas(clsBlowfish) unsigned char memory[sizeof(clsBlowfish)];
    auto* const cipher = new (memory) clsBlowfish("a key");
    EXPECT_LT(std::count(std::begin(memory), std::end(memory), 0), 200);
    cipher->~clsBlowfish();
    EXPECT_EQ(std::count(std::begin(memory), std::end(memory), 0), std::ssize(memory));
}

TEST(PassPhrase, ExactIfTheCodePageRepresentsIt)
{
    const std::tuple<unsigned, const wchar_t*, bool> cases[] = {{1252, L"", true}, {1252, L"p\u00E4\u20AC?", true},
        {1252, L"\u65E5", false}, {1252, L"\u0101", false}, // becomes "a"
        {932, L"\u65E5", true}, {932, L"\u00E4", false}, {65001, L"\u65E5\xD83D\xDE00", true},
        {65001, L"\xD83D", false}}; // becomes U+FFFD
    for (const auto& [codePage, phrase, isExact] : cases)
    {
        String text(phrase);
        text.SetCodePage(codePage);
        EXPECT_EQ(IsExactPassPhrase(text), isExact) << codePage << ": " << testing::PrintToString(phrase);
    }
    const DebugLines lines;
    EXPECT_STREQ(clsPassPhrase(L"usual").Text(), L"usual");
    EXPECT_EQ(lines.Count(), 0u);
    EXPECT_STREQ(clsPassPhrase(L"\xDC00").Text(), L"\xDC00") << "used all the same";
    EXPECT_NE(lines.Only().View().find(L"can't represent the pass phrase"), std::wstring_view::npos);
}

// The vectors of RFC 4648, section 10, in both directions.
TEST(Base64, PublishedVectors)
{
    const std::pair<const char*, const wchar_t*> vectors[] = {{"", L""}, {"f", L"Zg=="}, {"fo", L"Zm8="},
        {"foo", L"Zm9v"}, {"foob", L"Zm9vYg=="}, {"fooba", L"Zm9vYmE="}, {"foobar", L"Zm9vYmFy"},
        {"\xFB\xEF\xFF", L"++//"}};
    for (const auto& [plain, text] : vectors)
    {
        EXPECT_STREQ(Base64Encode(plain, std::strlen(plain)).Text(), text);
        EXPECT_EQ(Decoded(text), plain);
    }
}

TEST(Base64, ReadsLeniently)
{
    const std::pair<const wchar_t*, std::string> cases[] = {
        {L" Zm9v\r\n\tYmFy \r\n", "foobar"}, // blanks around groups and after the last one
        {L"Zm\u4E2D9v-_YmFy", "foobar"},     // any other character, even inside a group
        {L"Zm9vYg", "foob\0\0"s},            // missing padding at the end counts as zero bits
        {L"Zm9vY", "foo`\0\0"s}, {L"@2@", "\xD8\0\0"s}, {L"Zg==Zm9v", "f\0\0foo"s}, // padding in the middle is decoded
        {L"=AAA", ""}, {L"Zm9v====", "foo"}, // a group that begins with padding contains nothing
        {L"Zg=A", "f"},                      // the third byte requires the second
        {L"Zg\n==", "f\0"s},                 // inside a group the look-ahead doesn't skip blanks: it sees "\n="
        {L"\n \x2192", ""}};                 // no symbol
    for (const auto& [text, bytes] : cases)
        EXPECT_EQ(Decoded(text), bytes) << "of " << testing::PrintToString(text);
    // A text ends at the first zero.
    EXPECT_STREQ(Base64DecodeToText(String(L"w6Q="), 65001).Text(), L"\u00E4");
    EXPECT_STREQ(Base64DecodeToText(String(L"YQBi"), 0).Text(), L"a");
}

TEST(Base64, PassesOverAllOtherCharactersOfALongText)
{
    const std::string data = "thirty bytes, forty characters";
    const String text = Base64Encode(data.data(), data.size());
    for (unsigned c = 1; c < 0x10000; ++c)
        if (c > 0x7F || (std::isalnum(static_cast<int>(c)) == 0 && !std::strchr("+/=", static_cast<int>(c))))
        {
            String changed = text.Left(c % 16);
            changed.Append(static_cast<wchar_t>(c));
            changed += text.Mid(c % 16);
            ASSERT_EQ(Decoded(changed.Text()), data) << c;
        }
}

TEST(Base64, RoundTripOfEachLength)
{
    std::mt19937 random(1);
    std::string data;
    for (std::size_t size = 0; size <= 1000; ++size, data += static_cast<char>(random()))
    {
        const String text = Base64Encode(data.data(), size);
        ASSERT_EQ(text.Length(), Base64Length(size));
        ASSERT_EQ(Decoded(text.Text()), data);
    }
}
