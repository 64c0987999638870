#include "core/blowfish.h"

#include "core/debug_line.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <random>
#include <string>
#include <vector>

using namespace qx;

namespace
{

using Bytes = std::vector<unsigned char>;

Bytes FromHex(std::string_view hex)
{
    Bytes bytes;
    for (std::size_t i = 0; i < hex.size(); i += 2)
        bytes.push_back(static_cast<unsigned char>(std::stoi(std::string(hex.substr(i, 2)), nullptr, 16)));
    return bytes;
}

// The published vectors hold big-endian words, the library's blocks little-endian ones.
Bytes WithSwappedWords(Bytes bytes)
{
    for (auto word = bytes.begin(); word != bytes.end(); word += 4)
        std::reverse(word, word + 4);
    return bytes;
}

// A key of 8 bytes is used in a cycle, so it is the same as its ninefold repetition, which fills all 72 bytes here.
std::string FullKey(std::string_view hex)
{
    std::string key;
    for (int i = 0; i < 9; ++i)
        for (const unsigned char octet : FromHex(hex))
            key += static_cast<char>(octet);
    return key;
}

} // namespace

// Published by E. Young with the cipher; those whose key has no zero byte.
TEST(Blowfish, PublishedVectors)
{
    const struct
    {
        const char *key, *plain, *cipher;
    } vectors[] = {
        {"FFFFFFFFFFFFFFFF", "FFFFFFFFFFFFFFFF", "51866FD5B85ECB8A"},
        {"1111111111111111", "1111111111111111", "2466DD878B963C9D"},
        {"FEDCBA9876543210", "0123456789ABCDEF", "0ACEAB0FC6A0A28D"},
        {"7CA110454A1A6E57", "01A1D6D039776742", "59C68245EB05282B"},
        {"0131D9619DC1376E", "5CD54CA83DEF57DA", "B1B8CC0B250F09A0"},
        {"07A1133E4A0B2686", "0248D43806F67172", "1730E5778BEA1DA4"},
    };
    for (const auto& vector : vectors)
    {
        const clsBlowfish cipher(FullKey(vector.key).c_str());
        Bytes block = WithSwappedWords(FromHex(vector.plain));
        cipher.Encode(block.data(), block.size());
        EXPECT_EQ(WithSwappedWords(block), FromHex(vector.cipher)) << vector.key;
        cipher.Decode(block.data(), block.size());
        EXPECT_EQ(WithSwappedWords(block), FromHex(vector.plain)) << vector.key;
    }
}

TEST(Blowfish, ShortKeysAreExtended)
{
    // The byte behind "abc" is ("c" * 3 * 97) % 255 + 1 = 250; in front of an empty key stands zero.
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

    // There and back, whatever the length; less than a block is left alone.
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
