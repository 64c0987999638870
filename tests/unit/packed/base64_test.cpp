#include "core/base64.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

using namespace qx;

namespace
{

std::string Decoded(const wchar_t* text)
{
    ByteBlock bytes;
    const std::size_t size = Base64DecodeToBytes(String(text), bytes);
    return {reinterpret_cast<const char*>(bytes.data()), size};
}

using namespace std::string_literals;

} // namespace

// The vectors of RFC 4648, section 10, both ways.
TEST(Base64, PublishedVectors)
{
    const struct
    {
        const char* plain;
        const wchar_t* text;
    } vectors[] = {{"", L""}, {"f", L"Zg=="}, {"fo", L"Zm8="}, {"foo", L"Zm9v"}, {"foob", L"Zm9vYg=="},
        {"fooba", L"Zm9vYmE="}, {"foobar", L"Zm9vYmFy"}, {"\xFB\xEF\xFF", L"++//"}};
    for (const auto& vector : vectors)
    {
        EXPECT_STREQ(Base64Encode(vector.plain, std::strlen(vector.plain)).Text(), vector.text);
        EXPECT_EQ(Decoded(vector.text), vector.plain);
    }
}

TEST(Base64, ReadsLeniently)
{
    const struct
    {
        const wchar_t* text;
        std::string bytes;
    } cases[] = {{L" Zm9v\r\n\tYmFy \r\n", "foobar"}, // blanks around groups and behind the last
        {L"Zm\u4E2D9v-_YmFy", "foobar"},              // any other character, inside a group too
        {L"Zm9vYg", "foob\0\0"s},                     // an end without padding counts as zero bits
        {L"Zm9vY", "foo`\0\0"s}, {L"@2@", "\xD8\0\0"s}, {L"Zg==Zm9v", "f\0\0foo"s}, // padding in the middle stays
        {L"=AAA", ""}, {L"Zm9v====", "foo"}, // a group that begins with padding holds nothing
        {L"Zg=A", "f"},                      // the third byte needs the second
        {L"Zg\n==", "f\0"s},                 // inside a group the look-ahead is literal: it sees "\n="
        {L"\n \x2192", ""}};                 // no symbol
    for (const auto& c : cases)
        EXPECT_EQ(Decoded(c.text), c.bytes) << "of " << ::testing::PrintToString(c.text);
}

TEST(Base64, TextEndsAtTheFirstZero)
{
    EXPECT_STREQ(Base64DecodeToText(String(L"w6Q="), 65001).Text(), L"\u00E4");
    EXPECT_STREQ(Base64DecodeToText(String(L"w6Q="), 0).Text(), L"\u00C3\u00A4");
    EXPECT_STREQ(Base64DecodeToText(String(L"YQBi"), 0).Text(), L"a");
    EXPECT_STREQ(Base64DecodeToText(String(), 65001).Text(), L"");
}

TEST(Base64, RoundTripOfEachLength)
{
    std::mt19937 random(1);
    std::vector<unsigned char> data(1000);
    for (auto& octet : data)
        octet = static_cast<unsigned char>(random());
    for (std::size_t size = 0; size <= data.size(); ++size)
    {
        ByteBlock bytes;
        const String text = Base64Encode(data.data(), size);
        ASSERT_EQ(text.Length(), Base64Length(size));
        ASSERT_EQ(Base64DecodeToBytes(text, bytes), size);
        ASSERT_TRUE(size == 0 || std::memcmp(bytes.data(), data.data(), size) == 0) << size;
    }
}

TEST(Base64, StopsWhereTheRoomEnds)
{
    unsigned char bytes[7] = {9, 9, 9, 9, 9, 9, 9};
    const Base64Decoded decoded = Base64DecodeTo(bytes, 7, L"Zm9vYmFyZm9v", Base64Tail::byPadding);
    EXPECT_TRUE(decoded.cut);
    EXPECT_EQ(decoded.size, 6u);
    EXPECT_EQ(bytes[6], 9);
}
