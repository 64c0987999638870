#include "stacks/frame_text.h"
#include "stacks/frame_variables.h"
#include "support/debug_lines.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <tuple>

using namespace qx;

namespace
{

std::string TextOf(const DBGStackTraceItem& item)
{
    const qxtest::DebugLines lines;
    PrintFrame(item, clsDebugOutput_qvx_debug::Instance());
    std::string text;
    for (const auto& entry : lines.Entries())
        text += entry.text.NarrowText();
    return text;
}

DBGStackTraceItem Item()
{
    DBGStackTraceItem item{};
    item.size = sizeof item;
    item.address = 0x401234;
    item.moduleBase = 0x400000;
    CopyToField("app", item.module);
    return item;
}

TEST(FrameText, FullRecordsAndThoseWithOnlyAnAddress)
{
    DBGStackTraceItem item = Item();
    EXPECT_EQ(TextOf(item), "[0x0000000000401234] app!+0x0000000000001234 \n");
    CopyToField("_Z3runv", item.symbol);
    item.displacement = 0x34;
    EXPECT_EQ(TextOf(item), "[0x0000000000401234] app!_Z3runv + 0x0000000000000034 \n");
    CopyToField("run", item.name);
    CopyToField("run()", item.fullName);
    CopyToField("a.cpp", item.file);
    item.line = 7;
    EXPECT_EQ(TextOf(item), "[0x0000000000401234] app!run() + 0x0000000000000034   (a.cpp, line 7)\n");
    item.size = 9000;
    EXPECT_EQ(TextOf(item), "");
    item = Item();
    item.addressOnly = 1;
    item.moduleBase = 0;
    EXPECT_EQ(TextOf(item), "   CALL [0x0000000000401234] app!0x0000000000401234 ");
    CopyToField("run", item.symbol);
    EXPECT_EQ(TextOf(item), "   CALL [0x0000000000401234] app!run ");
    item.displacement = 16;
    EXPECT_EQ(TextOf(item), "   CALL [0x0000000000401234] app!run + 0x0000000000000010 ");
}

template <class Value>
std::uint64_t Bits(Value value)
{
    std::uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof value);
    return bits;
}

TEST(FrameText, ValuesByTypeAndSize)
{
    static const char text[] = "narrow";
    static const wchar_t wide[] = L"wide";
    // Size, base type, memory and text.
    const std::tuple<std::uint64_t, unsigned, std::uint64_t, std::string> cases[] = {{0, 6, Bits(-7), "-7"},
        {0, 8, Bits(1.5F), "1.5"}, {0, 7, 0x1234567890, "0x34567890"}, {1, 2, 0x1FF, "0x000000ff"},
        {2, 6, 0x1FFFF, "0x0000ffff"}, {4, 2, 5, "<invalid Char pointer, NULL HIword>"},
        {4, 3, 5, "<invalid WChar pointer, NULL HIword>"}, {4, 30, 5, "<invalid BSTR pointer, NULL HIword>"},
        {4, 6, Bits(-1), "-1"}, {4, 8, Bits(-0.25F), "-0.25"}, {4, 10, 1, "0x00000001"},
        {8, 2, 0, "<invalid 64 bit Char pointer, NULL HIword>"},
        {8, 2, 0xFFFF, "<invalid 64 bit Char pointer, NULL HIword>"},
        {8, 2, 0x7FFF'FFFF'F000, ""}, // unreadable on every system
        {8, 2, Bits(&text), "narrow"}, {8, 3, 1, "<invalid 64 bit WChar pointer, NULL HIword>"},
        {8, 3, Bits(&wide), "wide"}, {8, 30, 2, "<invalid 64 bit BSTR pointer, NULL HIword>"},
        {8, 30, Bits(&wide), "wide"}, {8, 6, Bits(-5000000000LL), "-5000000000"}, {8, 8, Bits(2.5), "2.5"},
        {8, 7, 0xABC, "0x0000000000000abc"}, {24, 0, 0, "@@@<param of size 24, possibly struct>"},
        {3, 6, 0, "@@@<param of size 3, possibly struct>"}};
    for (const auto& [size, baseType, memory, expected] : cases)
    {
        DBGStackTraceItem item = Item();
        item.parameterCount = 1;
        DBGParameter& parameter = item.parameters[0];
        CopyToField("p", parameter.name);
        parameter.isLocal = size == 2;
        DecodeValue(parameter, reinterpret_cast<std::uint64_t>(&memory), size, baseType);
        const std::string whole = TextOf(item);
        EXPECT_EQ(
            whole.substr(whole.find('\n') + 1), (size == 2 ? "        local(p)=" : "        param(p)=") + expected)
            << size << " " << baseType;
    }
}

TEST(FrameText, UnknownParametersGetTheWordsOfTheFrame)
{
    DBGStackTraceItem item = Item();
    item.parameterCount = 5;
    item.parameters[1].isLocal = true;
    item.parameters[3].kind = kHex64;
    constexpr ParameterSet kUnknown = 0b01110; // the first one has the value 0
    AddFrameWords(item, kUnknown, {0x1111, 0xAAAA'BBBB'CCCC'DDDD, 0x9999'BBBB'CCCC'DDDD, 0x2222});
    constexpr std::uint64_t kExpected[] = {0, 0, 0xCCCC'DDDD, 0x9999'BBBB'CCCC'DDDD, 0};
    for (int index = 0; index < item.parameterCount; ++index)
        EXPECT_EQ(item.parameters[index].value.number, kExpected[index]) << index;
}

TEST(FrameText, SymbolTypes)
{
    for (const auto& [type, text] :
        {std::pair(0, "<no known symbols>"), {4, "<exported>"}, {8, "Virtual"}, {9, "-unknown-"}, {-1, "-unknown-"}})
        EXPECT_STREQ(SymbolTypeText(type), text);
}

} // namespace
