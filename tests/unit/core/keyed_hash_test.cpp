#include "core/text/keyed_hash.h"

#include <gtest/gtest.h>

#include <string_view>
#include <utility>

using namespace qx;

// The hashes are from OpenSSL: openssl mac -macopt hexkey:000102030405060708090a0b0c0d0e0f -macopt size:8 SIPHASH,
// whose output begins with the lowest byte.
TEST(KeyedHash, IsSipHashOfTheTextInLowerCase)
{
    const KeyedHash hash(0x0706050403020100, 0x0F0E0D0C0B0A0908);
    constexpr std::pair<std::wstring_view, std::uint64_t> kCases[] = {
        {L"", 0x726FDB47DD0E0E31}, {L"a/b", 0x436330DC6D97BFF9}, {L"the quick fox[z@{", 0x9367632246A9001B}};
    for (const auto& [text, expected] : kCases)
        EXPECT_EQ(hash.WithoutCase(text), expected);
    EXPECT_EQ(hash.WithoutCase(L"THE QuicK Fox[Z@{"), hash.WithoutCase(L"the quick fox[z@{"));
    EXPECT_NE(KeyedHash::Random().WithoutCase(L"a"), KeyedHash::Random().WithoutCase(L"a"));
}
