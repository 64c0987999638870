#include "files/packed_text.h"

#include "core/base64.h"
#include "core/blowfish.h"
#include "support/zlib_reference.h"
#include "unit/packed/memory_file.h"

#include <cstring>
#include <random>
#include <string>

using namespace qx;
using namespace qxtest;
using namespace std::string_literals;

namespace
{

String Pack(const std::string& data, bool compress, const wchar_t* key = L"")
{
    MemoryFile source(data);
    return PackToString(source, compress, String(key));
}

std::string Unpack(const String& text, const wchar_t* key = L"")
{
    MemoryFile target("what stood there before and is longer than the data");
    EXPECT_TRUE(UnpackFromString(target, text.View(), String(key)));
    EXPECT_EQ(target.Tell(), 0);
    return target.Bytes();
}

std::string Size(std::uint32_t size)
{
    return {reinterpret_cast<const char*>(&size), sizeof size};
}

std::string Zlib(const std::string& data)
{
    return DeflatedByZlib(data, Z_DEFAULT_COMPRESSION, 15, 8, Z_DEFAULT_STRATEGY);
}

String Text(const wchar_t* prefix, const std::string& image)
{
    return String(prefix) + Base64Encode(image.data(), image.size());
}

std::string RandomBytes(std::mt19937& random, std::size_t size)
{
    std::string bytes(size, '\0');
    for (char& octet : bytes)
        octet = static_cast<char>(random() % 7 ? 'a' + random() % 4 : random());
    return bytes;
}

const std::string tag("QvX_Packed", 11);

} // namespace

TEST(PackedText, ImageOfTheCompressedForm)
{
    std::mt19937 random(6);
    for (const std::string& data :
        {std::string("x"), "\xF1\xF2\xF3\xF4\xF5\xF6\xF7\xF8"s, RandomBytes(random, 100'000)})
    {
        const String text = Pack(data, true);
        const std::string image =
            Size(static_cast<std::uint32_t>(data.size())) + tag + DeflatedByZlib(data, 9, 15, 9, Z_FILTERED);
        EXPECT_TRUE(text == Text(L"@2@", image)) << data.size();
    }
}

TEST(PackedText, RoundTripsUnderEachForm)
{
    std::mt19937 random(3);
    for (const std::size_t size : {1, 2, 3, 7, 8, 9, 11, 12, 13, 64, 4095, 100000})
        for (const bool compress : {false, true})
            for (const wchar_t* key : {L"", L"pass phrase", L"p\u00E4ss"})
            {
                // An enciphered image of 8 to 11 bytes is never deciphered.
                if (!compress && *key && size >= 8 && size < 12)
                    continue;
                const std::string data = RandomBytes(random, size);
                EXPECT_EQ(Unpack(Pack(data, compress, key), key), data) << size << compress;
            }
}

TEST(PackedText, TakesTheWholeSourceAndNothingOfNothing)
{
    MemoryFile source("abc"), target("kept");
    source.Seek(2);
    EXPECT_STREQ(PackToString(source, false, String()).Text(), L"YWJj");
    EXPECT_EQ(Pack("", true).Length(), 0u);
    EXPECT_FALSE(UnpackFromString(target, {}, String()));
    EXPECT_EQ(target.Bytes(), "kept");
    clsFileRO closed;
    EXPECT_EQ(PackToString(closed, false, String()).Length(), 0u);
}

TEST(PackedText, ReadsFormsAndDamage)
{
    const std::string data(50, 'd');
    const std::string packed = Zlib(data);
    const struct
    {
        const char* what;
        String text;
        std::string bytes;
    } cases[] = {
        {"version 1, zero bits behind the stream", Text(L"@1@", Size(50) + packed + "\0\0"s), data},
        {"version 1 without a whole size", Text(L"@1@", "ab"), ""},
        {"version 2 without a tag stays as it is", Text(L"@2@", "fifteen bytes!!"), "fifteen bytes!!"},
        {"version 2 below its head stays as it is", Text(L"@2@", "short"), "short"},
        {"size too large", Text(L"@2@", Size(51) + tag + packed), ""},
        {"size too small", Text(L"@2@", Size(49) + tag + packed), ""},
        {"size beyond all reach", Text(L"@2@", Size(0xFFFFFFFF) + tag + packed), ""},
        {"no stream", Text(L"@2@", Size(50) + tag), ""},
        {"empty stream", Text(L"@2@", Size(0) + tag + Zlib("")), ""},
        {"a prefix cut short is plain", String(L"@1"), "\xD4\0\0"s},
        {"another prefix is plain", String(L"@3@Zm9v"), "\xDD\x99\xBD\xBC\0\0"s},
    };
    for (const auto& c : cases)
        EXPECT_EQ(Unpack(c.text), c.bytes) << c.what;
}

TEST(PackedText, WrongKeyGivesMeaninglessBytes)
{
    const std::string data(20, 'k');
    const String text = Pack(data, true, L"right");
    ByteBlock image;
    const std::size_t size = Base64DecodeToBytes(text.Mid(3), image);
    clsBlowfish("wrong").Decode(image.data(), size);
    EXPECT_EQ(Unpack(text, L"wrong"), std::string(reinterpret_cast<char*>(image.data()), size));
}

// Straight to memory of any size as by way of a block, whatever stands between the symbols.
TEST(PackedText, UnpacksToMemoryThatJustFits)
{
    std::mt19937 random(11);
    for (int round = 0; round < 2000; ++round)
    {
        String text = Pack(RandomBytes(random, random() % 12), random() % 3 == 0);
        const bool isWhole = random() % 2 != 0;
        if (!isWhole)
            for (auto changes = random() % 4; changes != 0 && text.Length() != 0; --changes)
                text = String(text.View().substr(0, random() % text.Length())) + String(&L" =A"[random() % 3]) +
                       String(text.View().substr(random() % text.Length()));
        const auto data = DataOfPackedText(text.View(), String()).value_or(ByteBlock());
        for (std::size_t room = 0; room < data.size() + 4; ++room)
        {
            std::string memory(room, 'x');
            const auto count = UnpackTo(reinterpret_cast<unsigned char*>(memory.data()), room, text.View());
            ASSERT_EQ(count.has_value(), room >= data.size()) << room << " for " << data.size();
            if (count || isWhole)
            {
                EXPECT_EQ(memory.substr(0, count.value_or(room)),
                    count ? std::string(data.data(), data.data() + data.size()) : std::string(room, 'x'));
            }
        }
    }
}

// Whatever the text holds, it is read to some bytes of bounded size.
TEST(PackedText, DamagedTextNeverFails)
{
    std::mt19937 random(4);
    const String whole = Pack(RandomBytes(random, 300), true);
    for (std::size_t length = 1; length < whole.Length(); ++length)
    {
        MemoryFile target;
        EXPECT_TRUE(UnpackFromString(target, whole.View().substr(0, length), String()));
        EXPECT_LE(target.GetSize(), 300);
    }
    for (int i = 0; i < 2000; ++i)
    {
        String text = whole;
        text[random() % text.Length()] = static_cast<wchar_t>(random() % 128);
        MemoryFile target;
        UnpackFromString(target, text.View(), String());
        EXPECT_LE(target.GetSize(), 300 * 1032);
    }
}
