#include "files/packed_text.h"

#include "core/packing/base64.h"
#include "core/packing/blowfish.h"
#include "files/deflate_stream.h"
#include "support/record_bytes.h"
#include "support/zlib_reference.h"
#include "unit/packed/memory_file.h"

#include <random>
#include <string>
#include <tuple>
#include <utility>

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

const auto Size = BytesOfRecord<std::uint32_t>;

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

// Returns data with short and long matches, so that each of zlib's parameters affects the output.
std::string Sample(std::size_t size)
{
    std::mt19937 random(5);
    std::string data(size, '\0');
    for (char& octet : data)
    {
        const unsigned letters = random() % 8 == 0 ? 20 : 3;
        octet = static_cast<char>('a' + random() % letters);
    }
    return data;
}

} // namespace

TEST(PackedText, ImageOfTheCompressedForm)
{
    std::mt19937 random(6);
    for (const std::string& data :
        {std::string("x"), "\xF1\xF2\xF3\xF4\xF5\xF6\xF7\xF8"s, RandomBytes(random, 100'000)})
    {
        std::string image =
            Size(static_cast<std::uint32_t>(data.size())) + tag + DeflatedByZlib(data, 9, 15, 9, Z_FILTERED);
        EXPECT_TRUE(Pack(data, true) == Text(L"@2@", image)) << data.size();
        clsBlowfish("key").Encode(reinterpret_cast<unsigned char*>(image.data()), image.size());
        EXPECT_TRUE(Pack(data, true, L"key") == Text(L"@2@", image)) << data.size();
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
    const std::string data(50, 'd'), packed = Zlib(data);
    const std::tuple<const char*, String, std::string> cases[] = {
        {"version 1, zero bits behind the stream", Text(L"@1@", Size(50) + packed + "\0\0"s), data},
        {"version 1 without a whole size", Text(L"@1@", "ab"), ""},
        {"version 2 without a tag stays as it is", Text(L"@2@", "fifteen bytes!!"), "fifteen bytes!!"},
        {"version 2 below its head stays as it is", Text(L"@2@", "short"), "short"},
        {"size too large", Text(L"@2@", Size(51) + tag + packed), ""},
        {"size too small", Text(L"@2@", Size(49) + tag + packed), ""},
        {"size beyond all reach", Text(L"@2@", Size(0xFFFFFFFF) + tag + packed), ""},
        {"no stream", Text(L"@2@", Size(50) + tag), ""}, {"empty stream", Text(L"@2@", Size(0) + tag + Zlib("")), ""},
        {"a prefix cut short is plain", String(L"@1"), "\xD4\0\0"s},
        {"another prefix is plain", String(L"@3@Zm9v"), "\xDD\x99\xBD\xBC\0\0"s}};
    for (const auto& [what, text, bytes] : cases)
        EXPECT_EQ(Unpack(text), bytes) << what;
}

// Unpacks texts with any characters between the symbols, directly to memory of any size or through a block.
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

TEST(DeflateStream, EachModeGivesTheBytesOfZlib)
{
    constexpr std::tuple<int, int, int, int> kRows[] = {{1, 1, 8, 0}, {2, -1, 8, 0}, {3, 9, 8, 0}, {4, 9, 9, 1},
        {5, 9, 9, 0}, {6, 1, 9, 1}, {7, 1, 7, 0}, {8, -1, 8, 0}};
    for (const auto& [mode, level, memoryLevel, strategy] : kRows)
    {
        const std::string data = Sample(level == 1 ? 1'100'000 : 100'000); // more than one chunk at the fast level
        MemoryFile source(data), packed, unpacked;
        std::uint32_t crc = 1;
        EXPECT_EQ(DeflateStream(packed, source, mode, &crc, -1), Z_STREAM_END);
        EXPECT_EQ(crc, crc32(0, reinterpret_cast<const Bytef*>(data.data()), static_cast<uInt>(data.size())));
        EXPECT_TRUE(packed.Bytes() == DeflatedByZlib(data, level, -15, memoryLevel, strategy)) << mode;
        packed.Seek(0);
        EXPECT_EQ(InflateStream(unpacked, packed, -1), 0);
        EXPECT_TRUE(unpacked.Bytes() == data) << mode;
    }
}

TEST(DeflateStream, WorksBetweenPositionsAndOnNothing)
{
    MemoryFile source("..abcdef.."), packed("head, and a long tail that goes away"), unpacked("> and more");
    source.Seek(2);
    packed.Seek(4);
    EXPECT_EQ(DeflateStream(packed, source, 2, nullptr, 6), Z_STREAM_END);
    EXPECT_EQ(source.Tell(), 8);
    const std::int64_t size = packed.GetSize();
    EXPECT_EQ(packed.Tell(), size);
    EXPECT_EQ(packed.Bytes().substr(0, 4), "head");
    packed.Seek(4);
    unpacked.Seek(1);
    EXPECT_EQ(InflateStream(unpacked, packed, size - 4), 0);
    EXPECT_EQ(unpacked.Bytes(), ">abcdef");

    MemoryFile empty, none;
    std::uint32_t crc = 7;
    EXPECT_EQ(DeflateStream(none, empty, 1, &crc, -1), Z_STREAM_END);
    EXPECT_EQ(crc, 0u);
    EXPECT_EQ(none.Bytes(), "\x03\0"s);
    none.Seek(0);
    unpacked.Seek(0);
    EXPECT_EQ(InflateStream(unpacked, none, -1), 0);
    EXPECT_EQ(unpacked.Bytes(), "");
}

TEST(PackedText, StrictUnpacking)
{
    const std::string data = Sample(1001);
    const String plain = Pack(data, false), packed = Pack(data, true), secret = Pack(data, true, L"key");
    const auto withBreaks = [](String text)
    {
        for (const std::size_t at : {std::size_t{2}, text.Length() - 3, std::size_t{0}})
            text.Insert(at, String(L" \r\n\t"));
        return text;
    };
    const std::string zlib = Zlib(data);
    const String old = Text(L"@1@", Size(1001) + zlib);
    using enum UnpackFault;
    const std::tuple<String, const wchar_t*, UnpackFault> cases[] = {{plain, L"", None}, {packed, L"", None},
        {secret, L"key", None}, {old, L"", None}, {withBreaks(plain), L"", None}, {withBreaks(packed), L"", None},
        {withBreaks(secret), L"key", None},
        // keys
        {secret, L"wrong", WrongKey}, {secret, L"", WrongKey}, {packed, L"key", NotEncrypted}, {old, L"key", WrongKey},
        // characters and lengths
        {plain + L"-", L"", NotPackedText}, {plain + L"A", L"", NotPackedText}, {plain + L"====", L"", NotPackedText},
        {String(L"Zg==Zg=="), L"", NotPackedText}, {String(L"Zh=="), L"", NotPackedText},
        {String(L"Z==="), L"", NotPackedText}, {String(L"@2@"), L"", NotPackedText},
        {String(L"@3@") + plain, L"", NotPackedText}, {String(L"Zm9v\x2192"), L"", NotPackedText},
        // tag, size, rest
        {Text(L"@2@", Size(1001) + "QvX_packed\0"s + zlib), L"", WrongKey}, {Text(L"@2@", "short"), L"", WrongKey},
        {Text(L"@2@", Size(1000) + tag + zlib), L"", Damaged}, {Text(L"@2@", Size(1002) + tag + zlib), L"", Damaged},
        {Text(L"@2@", Size(1001) + tag + zlib + "x"), L"", Damaged},
        {Text(L"@2@", Size(1001) + tag + zlib.substr(0, zlib.size() - 1)), L"", Damaged},
        {Text(L"@1@", Size(1001) + zlib + "more"), L"", Damaged}, {Text(L"@1@", "x"), L"", Damaged}};
    int row = 0;
    for (const auto& [text, key, fault] : cases)
    {
        const Unpacked unpacked = UnpackStrictly(text.View(), String(key));
        EXPECT_EQ(unpacked.fault, fault) << text.Left(40).NarrowText() << ", row " << row++;
        EXPECT_EQ(std::string(reinterpret_cast<const char*>(unpacked.data.data()), unpacked.data.size()),
            fault == None ? data : "");
    }
    EXPECT_EQ(UnpackStrictly(L" \n", String(L"key")).fault, None) << "no data";
}

TEST(DeflateStream, FailuresOfBothDirections)
{
    MemoryFile source("abc"), noise("\xFF\xFF\xFF\xFF"), tooShort("abc"), packed, target;
    clsFileRW closed;
    EXPECT_EQ(DeflateStream(target, source, 1, nullptr, 4), Z_DATA_ERROR);
    EXPECT_EQ(InflateStream(target, noise, -1), Z_DATA_ERROR);
    EXPECT_EQ(InflateStream(target, tooShort, 9), Z_DATA_ERROR);
    source.Seek(0);
    EXPECT_LT(DeflateStream(closed, source, 1, nullptr, -1), 0);
    source.Seek(0);
    DeflateStream(packed, source, 1, nullptr, -1);
    packed.Seek(0);
    EXPECT_EQ(InflateStream(closed, packed, -1), Z_BUF_ERROR);
    for (const auto& [from, size] : {std::pair<clsFile*, int>(&closed, -1), std::pair<clsFile*, int>(&packed, -2)})
    {
        EXPECT_EQ(DeflateStream(target, *from, 1, nullptr, size), Z_DATA_ERROR);
        EXPECT_EQ(InflateStream(target, *from, size), Z_DATA_ERROR);
    }
}
