#include <qxut23/convert.h>

#include "support/fake_stream.h"
#include "support/memory_stream.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <combaseapi.h>
#include <objidl.h>
#include <oleauto.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

using qxtest::MemoryStream;

namespace
{

const std::string data(3000, 'r');

HGLOBAL NewMemory(const std::string& bytes)
{
    HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE, bytes.size());
    std::memcpy(GlobalLock(memory), bytes.data(), bytes.size());
    GlobalUnlock(memory);
    return memory;
}

} // namespace

TEST(Convert, TextRule)
{
    wchar_t buffer[8];
    EXPECT_EQ(UtilConvertBLOBToString("abc", 3, nullptr, 8, 0), 5);
    EXPECT_EQ(UtilConvertBLOBToString("abc", 3, buffer, 0, 0), 5);
    EXPECT_EQ(UtilConvertBLOBToString("abc", 3, buffer, 5, 0), 0);
    EXPECT_STREQ(buffer, L"YWJj");
    EXPECT_EQ(UtilConvertBLOBToString("abc", 3, buffer, 4, 0), -44);
    EXPECT_STREQ(buffer, L"YWJ");
    EXPECT_EQ(UtilConvertBLOBToString(nullptr, 0, nullptr, 0, 1), 1);
    EXPECT_EQ(UtilConvertBLOBToString(nullptr, 0, buffer, 8, 0), 0);
    EXPECT_STREQ(buffer, L"");
}

TEST(Convert, EachRoadIsTheSameText)
{
    for (const int compress : {0, 1, -7})
    {
        std::vector<wchar_t> blob(8000), stream(8000), memory(8000);
        EXPECT_EQ(UtilConvertBLOBToString(data.data(), 3000, blob.data(), 8000, compress), 0);
        EXPECT_EQ(std::wcsncmp(blob.data(), L"@2@", 3) == 0, compress != 0);

        const MemoryStream source(data);
        source.Seek(100); // the position is ignored
        EXPECT_EQ(UtilConvertStreamToString(source, stream.data(), 8000, compress), 0);
        EXPECT_STREQ(stream.data(), blob.data());
        BSTR text = nullptr;
        EXPECT_EQ(UtilConvertStreamToBSTR(source, &text, compress), 0);
        EXPECT_STREQ(text, blob.data());
        HGLOBAL block = NewMemory(data);
        EXPECT_EQ(UtilConvertHGLOBALToString(block, memory.data(), 8000, compress), 0);
        std::vector<char> unpacked(GlobalSize(block));
        EXPECT_EQ(UtilConvertStringToBLOB(memory.data(), unpacked.data(), static_cast<std::uint32_t>(unpacked.size())),
            static_cast<int>(unpacked.size()));
        EXPECT_EQ(std::memcmp(unpacked.data(), data.data(), data.size()), 0);
        EXPECT_EQ(UtilConvertHGLOBALToBSTR(block, &text, compress), 0);
        EXPECT_STREQ(text, memory.data());
        GlobalFree(block);

        // An existing string is replaced.
        EXPECT_EQ(UtilConvertBLOBToBSTR(data.data(), 3000, &text, compress), 0);
        EXPECT_STREQ(text, blob.data());
        SysFreeString(text);
    }
}

TEST(Convert, StreamsInPieces)
{
    qxtest::FakeStream stream;
    stream.bytes = "foobar";
    stream.readLimit = 4;
    wchar_t buffer[20];
    EXPECT_EQ(UtilConvertStreamToString(&stream, buffer, 20, 0), 0);
    EXPECT_STREQ(buffer, L"Zm9vYmFy");
    stream.readLimit = 0;
    BSTR text = nullptr;
    EXPECT_EQ(UtilConvertStreamToString(&stream, buffer, 20, 1), -1);
    EXPECT_EQ(UtilConvertStreamToBSTR(&stream, &text, 1), -1);
    EXPECT_EQ(text, nullptr);
}

TEST(Convert, BackToBytes)
{
    const wchar_t* packed = L"Zm9v\r\nYmFy";
    char bytes[6] = {};
    EXPECT_EQ(UtilConvertStringToBLOB(packed, nullptr, 0), 6);
    EXPECT_EQ(UtilConvertStringToBLOB(packed, bytes, 5), -1);
    EXPECT_EQ(bytes[0], 0);
    EXPECT_EQ(UtilConvertStringToBLOB(packed, bytes, 6), 6);
    EXPECT_EQ(std::string(bytes, 6), "foobar");
    EXPECT_EQ(UtilConvertStringToBLOB(L"", bytes, 6), 0);

    const MemoryStream stream("longer than the data are");
    for (const wchar_t* text : {packed, L""})
    {
        EXPECT_EQ(UtilConvertStringToStream(text, stream), 0);
        EXPECT_EQ(stream.Bytes(), "foobar");
    }

    HGLOBAL memory = NewMemory("is freed");
    EXPECT_EQ(UtilConvertStringToHGLOBAL(packed, &memory), 0);
    ASSERT_GE(GlobalSize(memory), 6u);
    EXPECT_EQ(std::memcmp(GlobalLock(memory), "foobar", 6), 0);
    GlobalUnlock(memory);
    GlobalFree(memory);
}

TEST(Convert, NullArguments)
{
    BSTR text = nullptr;
    wchar_t buffer[4] = L"abc";
    HGLOBAL memory = nullptr;
    EXPECT_EQ(UtilConvertBLOBToBSTR("a", 1, nullptr, 0), -1);
    EXPECT_EQ(UtilConvertBLOBToBSTR(nullptr, 1, &text, 0), -2);
    EXPECT_EQ(UtilConvertBLOBToString(nullptr, 1, buffer, 4, 0), -2);
    EXPECT_EQ(UtilConvertStringToBLOB(nullptr, buffer, 4), -2);
    EXPECT_EQ(UtilConvertStreamToString(nullptr, buffer, 4, 0), -2);
    EXPECT_EQ(UtilConvertStreamToBSTR(nullptr, &text, 0), -2);
    EXPECT_EQ(UtilConvertStringToStream(L"Zm9v", nullptr), -2);
    EXPECT_EQ(UtilConvertHGLOBALToString(nullptr, buffer, 4, 0), -2);
    EXPECT_EQ(UtilConvertHGLOBALToBSTR(nullptr, &text, 0), -2);
    EXPECT_EQ(UtilConvertStringToHGLOBAL(L"Zm9v", nullptr), -2);
    EXPECT_EQ(UtilConvertStringToHGLOBAL(nullptr, &memory), -2);
    EXPECT_EQ(text, nullptr);
    EXPECT_EQ(memory, nullptr);
    EXPECT_STREQ(buffer, L"abc");
}
