// Reads the archive member that describes a document.
#include "zip/member_text.h"

#include "files/file_window.h"
#include "support/debug_lines.h"
#include "support/zip_builder.h"
#include "unit/packed/memory_file.h"

#include <gtest/gtest.h>

#include <optional>

using namespace qx;
using namespace qxtest;

namespace
{

struct Receiver : IZIPTextReceiver
{
    void OnText(ZIPTextKind kind_, const String& text_, const clsZIPMember& member) override
    {
        kind = kind_;
        text = text_;
        if (codePage != 0)
            text = member.Text(codePage);
    }

    unsigned codePage = 0;
    std::optional<ZIPTextKind> kind;
    String text;
};

BuiltMember Meta(const std::string& content, std::uint16_t method = kZipMethodDeflate)
{
    return BuiltMember("meta.xml", content, method);
}

std::string With(std::string bytes, std::size_t offset, const std::string& change)
{
    return bytes.replace(offset, change.size(), change);
}

const BuiltMember other("content.xml", "content"), meta = Meta("<meta>"), core("docProps/core.xml", "<core>");

} // namespace

TEST(ZIPMemberText, Table)
{
    const std::wstring_view none; // the text argument is unchanged
    constexpr wchar_t kNoFinalizer[] = L"WRN: GetZIPFilenames: file has bad format (no finalizer)";
    constexpr wchar_t kNoneFound[] = L"WRN: GetZIPFilenames: read error (no finalizer found)";
    constexpr wchar_t kBadFormat[] = L"WRN: GetZIPFilenames: file has bad format";
    constexpr wchar_t kBadEntry[] = L"ERR: bad ZIP FILE ENTRY";
    const std::string usual = Build({other, meta}), single = Build({meta});
    const std::size_t place = usual.size() - 6; // of the directory
    const std::string long255(255, 'n'), long256(256, 'n');
    const struct
    {
        std::string bytes;
        int result;
        std::wstring_view text;
        const wchar_t* line = L""; // the only debug line
        unsigned codePage = 0;
    } cases[] = {{std::string(21, 'P'), -1, none, kNoFinalizer}, {"", -1, none, kNoFinalizer},
        {std::string(22, 'P'), -1, none, kNoneFound}, {Build({meta}, "!"), -1, none, kNoneFound}, {Build({}), -1, none},
        {Build({other}), -1, none}, {usual, 0, L"<meta>"}, {Build({other, core}), 0, L"<core>"},
        {Build({core, meta}), 0, L"<core>"}, {Build({BuiltMember("META.XML", "x")}), 0, L"x"},
        {Build({BuiltMember("x/meta.xml", "x")}), -1, none}, {Build({Meta("stored", 0)}), 0, L"stored"},
        {Build({Meta("")}), 0, none}, {Build({Meta("", 0)}), 0, none},
        {Build({other, Meta("streamed").Streamed()}), 0, L"streamed"},
        {Build({Meta("x", 12)}), 0, none, L"unknown compression method 12"},
        {Build({Meta("x").Flags(0x80)}), 0, L"x", L"bad finalizer!"},
        {Build({Meta("x").Streamed().Flags(0x80)}), 0, L"x", L"file finalizer: 29 85"},
        // sizes and data
        {Build({meta.Changed([](BuiltMember& m) { m.central.uncompressedSize = 0x80000000; })}), 0, none},
        {Build({meta.Changed([](BuiltMember& m) { m.central.uncompressedSize = m.central.crc = 1; })}), 0, L"<meta>"},
        {Build({meta.Changed([](BuiltMember& m) { m.central.compressedSize = 0x7FFFFFF0; })}), 0, none},
        {Build({meta.Changed([](BuiltMember& m) { m.data[0] = 7; })}), 0, none},
        // texts of more than 255 bytes
        {Build({BuiltMember(long256, "x"), meta}), -1, none, kBadFormat},
        {Build({BuiltMember(long255, "x"), meta}), 0, L"<meta>"},
        {Build({meta.Changed([](BuiltMember& m) { m.extra.assign(256, 'e'); })}), -1, none, kBadFormat},
        {Build({meta.Changed([](BuiltMember& m) { m.comment.assign(256, 'c'); })}), -1, none, kBadFormat},
        {Build({meta.Changed([](BuiltMember& m) { m.comment = m.extra = std::string(255, 'c'); })}), 0, L"<meta>"},
        // a directory past the end, and one that points elsewhere; local headers
        {With(usual, place, std::string("\0\1\0\0", 4)), -1, none, kBadFormat},
        {With(usual, place, std::string("\0\0\0\0", 4)), -1, none, kBadFormat},
        {With(single, 0, "x"), 0, none, kBadEntry}, {With(single, 26, std::string("\0\1", 2)), 0, none, kBadEntry},
        {With(single, 26, "\xFF"), 0, none, kBadEntry},
        // code pages; stored text is in the default code page
        {Build({Meta("\xC3\xA4")}), 0, L"\u00E4", L"", 65001}, {Build({Meta("plain", 0)}), 0, L"plain", L"", 1200},
        {Build({Meta("\xE4")}), 0, L"\u0434", L"", 1251}, {Build({Meta(std::string("a\0b", 3))}), 0, L"a"}};
    int row = 0;
    for (const auto& test : cases)
    {
        SCOPED_TRACE(row++);
        MemoryFile file(test.bytes);
        FileWindow window(file);
        Receiver receiver;
        receiver.codePage = test.codePage;
        DebugLines lines;
        EXPECT_EQ(GetZIPFilenames(receiver, window), test.result);
        EXPECT_EQ(receiver.kind.has_value(), !test.text.empty());
        EXPECT_STREQ(receiver.text, String(test.text));
        EXPECT_EQ(receiver.kind == ZIPTextKind::OfficeOpenXml, test.text == L"<core>");
        EXPECT_STREQ(lines.Last(), test.line);
    }
}

TEST(ZIPMemberText, LongTexts)
{
    std::string content; // several chunks
    for (unsigned i = 0; content.size() < 3'000'000; ++i)
        content += static_cast<char>('a' + i * i / 100 % 26);
    MemoryFile file(Build({BuiltMember("docProps/core.xml", content)}));
    FileWindow window(file);
    Receiver receiver;
    EXPECT_EQ(GetZIPFilenames(receiver, window), 0);
    EXPECT_TRUE(receiver.text.NarrowText() == content);

    MemoryFile bomb(Build({Meta(std::string(70'000'000, 'x'))})); // a member that would exhaust memory
    FileWindow bombWindow(bomb);
    Receiver nothing;
    EXPECT_EQ(GetZIPFilenames(nothing, bombWindow), 0);
    EXPECT_FALSE(nothing.kind.has_value());
}
