// The reader that finds the one member of a document that tells of it.
#include "zip/member_text.h"

#include "support/debug_lines.h"
#include "support/zip_builder.h"
#include "unit/packed/memory_file.h"

#include <gtest/gtest.h>

#include <optional>
#include <random>

using namespace qx;
using namespace qxtest;

namespace
{

struct Receiver : IZIPTextReceiver
{
    void OnText(ZIPTextKind kind_, const String& text_, const clsZIPMemberReader& reader) override
    {
        kind = kind_;
        text = text_;
        if (codePage != 0)
            text = reader.Read(codePage);
    }

    unsigned codePage = 0;
    std::optional<ZIPTextKind> kind;
    String text;
};

struct Case
{
    const char* what;
    std::string bytes;
    int result;
    const wchar_t* text; // null: none was handed over
    const wchar_t* line; // the only debug line, or null
    unsigned codePage = 0;
    std::optional<ZIPTextKind> kind = std::nullopt; // if it matters
};

std::string WithFirstLocal(std::string bytes, std::size_t offset, const std::string& change)
{
    return bytes.replace(offset, change.size(), change);
}

BuiltMember Changed(BuiltMember member, void (*change)(BuiltMember&))
{
    change(member);
    return member;
}

const BuiltMember other("content.xml", "content");
const BuiltMember meta("meta.xml", "<meta>");
const BuiltMember core("docProps/core.xml", "<core>");

constexpr wchar_t badFormat[] = L"WRN: GetZIPFilenames: file has bad format";
constexpr wchar_t badEntry[] = L"ERR: bad ZIP FILE ENTRY";

std::vector<Case> Cases()
{
    const std::string usual = Build({other, meta});
    const std::string text200(200, 'n');
    return {
        {"too small", std::string(21, 'P'), -1, nullptr, L"WRN: GetZIPFilenames: file has bad format (no finalizer)"},
        {"nothing", "", -1, nullptr, L"WRN: GetZIPFilenames: file has bad format (no finalizer)"},
        {"no end record", std::string(22, 'P'), -1, nullptr, L"WRN: GetZIPFilenames: read error (no finalizer found)"},
        {"comment of the archive", Build({meta}, "!"), -1, nullptr,
            L"WRN: GetZIPFilenames: read error (no finalizer found)"},
        {"no entries", Build({}), -1, nullptr, nullptr},
        {"neither member", Build({other}), -1, nullptr, nullptr},
        {"OpenDocument", usual, 0, L"<meta>", nullptr, 0, ZIPTextKind::openDocument},
        {"Office Open XML", Build({other, core}), 0, L"<core>", nullptr, 0, ZIPTextKind::officeOpenXml},
        {"the first of both, 1", Build({core, meta}), 0, L"<core>", nullptr},
        {"the first of both, 2", Build({meta, core}), 0, L"<meta>", nullptr},
        {"case", Build({BuiltMember("META.XML", "x")}), 0, L"x", nullptr},
        {"other folder", Build({BuiltMember("x/meta.xml", "x")}), -1, nullptr, nullptr},
        {"stored", Build({BuiltMember("meta.xml", "stored", 0)}), 0, L"stored", nullptr},
        {"empty", Build({BuiltMember("meta.xml", "")}), 0, nullptr, nullptr},
        {"stored and empty", Build({BuiltMember("meta.xml", "", 0)}), 0, nullptr, nullptr},
        {"streamed", Build({other, BuiltMember("meta.xml", "streamed").Streamed()}), 0, L"streamed", nullptr},
        {"method 12", Build({BuiltMember("meta.xml", "x", 12)}), 0, nullptr, L"unknown compression method 12"},
        {"no finalizer", Build({BuiltMember("meta.xml", "x").Flags(0x80)}), 0, L"x", L"bad finalizer!"},
        {"finalizer", Build({BuiltMember("meta.xml", "x").Streamed().Flags(0x80)}), 0, L"x", L"file finalizer: 29 85"},
        {"size with its sign", Build({Changed(meta, [](BuiltMember& m) { m.central.uncompressedSize = 0x80000000; })}),
            0, nullptr, nullptr},
        {"wrong size and checksum are taken",
            Build({Changed(meta, [](BuiltMember& m) { m.central.uncompressedSize = m.central.crc = 1; })}), 0,
            L"<meta>", nullptr},
        {"more data than the file has",
            Build({Changed(meta, [](BuiltMember& m) { m.central.compressedSize = 0x7FFFFFF0; })}), 0, nullptr, nullptr},
        {"damaged data", Build({Changed(meta, [](BuiltMember& m) { m.data[0] = 7; })}), 0, nullptr, nullptr},
        {"long name in front", Build({BuiltMember(std::string(256, 'n'), "x"), meta}), -1, nullptr, badFormat},
        {"name of 255 bytes in front", Build({BuiltMember(std::string(255, 'n'), "x"), meta}), 0, L"<meta>", nullptr},
        {"long extra field", Build({Changed(meta, [](BuiltMember& m) { m.extra.assign(256, 'e'); })}), -1, nullptr,
            badFormat},
        {"long comment", Build({Changed(meta, [](BuiltMember& m) { m.comment.assign(256, 'c'); })}), -1, nullptr,
            badFormat},
        {"all as long as may be",
            Build({Changed(meta,
                [](BuiltMember& m)
                {
                    m.comment.assign(255, 'c');
                    m.extra.assign(255, 'e');
                })}),
            0, L"<meta>", nullptr},
        {"directory behind the end", WithFirstLocal(usual, usual.size() - 6, std::string("\0\1\0\0", 4)), -1, nullptr,
            badFormat},
        {"directory at something else", WithFirstLocal(usual, usual.size() - 6, std::string("\0\0\0\0", 4)), -1,
            nullptr, badFormat},
        {"no local header", WithFirstLocal(Build({meta}), 0, "x"), 0, nullptr, badEntry},
        {"long local name", WithFirstLocal(Build({meta}), 26, std::string("\0\1", 2)), 0, nullptr, badEntry},
        {"local name behind the end", WithFirstLocal(Build({meta}), 26, "\xFF"), 0, nullptr, badEntry},
        {"8-bit text", Build({BuiltMember("meta.xml", "\xC3\xA4")}), 0, L"\u00E4", nullptr, 65001},
        {"stored 8-bit text is in the default page", Build({BuiltMember("meta.xml", "plain", 0)}), 0, L"plain", nullptr,
            1200},
        {"page 1251", Build({BuiltMember("meta.xml", "\xE4")}), 0, L"\u0434", nullptr, 1251},
        {"to the first zero? no, all", Build({BuiltMember("meta.xml", std::string("a\0b", 3))}), 0, L"a", nullptr},
    };
}

} // namespace

TEST(ZIPMemberText, Table)
{
    for (const Case& test : Cases())
    {
        SCOPED_TRACE(test.what);
        MemoryFile file(test.bytes);
        Receiver receiver;
        receiver.codePage = test.codePage;
        DebugLines lines;
        EXPECT_EQ(GetZIPFilenames(receiver, file), test.result);
        EXPECT_EQ(receiver.kind.has_value(), test.text != nullptr);
        EXPECT_STREQ(receiver.text, test.text ? test.text : L"");
        if (test.kind)
        {
            EXPECT_EQ(receiver.kind, test.kind);
        }
        EXPECT_STREQ(lines.Last(), test.line ? test.line : L"");
    }
}

TEST(ZIPMemberText, LongTextOfSeveralChunks)
{
    std::string content;
    for (unsigned i = 0; content.size() < 3'000'000; ++i)
        content += static_cast<char>('a' + i * i / 100 % 26);
    MemoryFile file(Build({BuiltMember("docProps/core.xml", content)}));
    Receiver receiver;
    EXPECT_EQ(GetZIPFilenames(receiver, file), 0);
    EXPECT_TRUE(receiver.text.NarrowText() == content);
}

TEST(ZIPMemberText, AMemberThatWouldFillTheMemory)
{
    MemoryFile file(Build({BuiltMember("meta.xml", std::string(70'000'000, 'x'))}));
    Receiver receiver;
    EXPECT_EQ(GetZIPFilenames(receiver, file), 0);
    EXPECT_FALSE(receiver.kind.has_value());
}

TEST(ZIPMemberText, ReadingLeavesThePosition)
{
    MemoryFile file(Build({other, meta}));
    file.Seek(Build({other, meta}).size() - 22 - 2 * 46 - 19);
    scZIPCentralRecord record;
    ASSERT_TRUE(ReadCentralRecord(record, file));
    EXPECT_EQ(record.name, "content.xml");
    const std::int64_t position = file.Tell();
    EXPECT_STREQ(ReadEntryText(file, record, 0), L"content");
    EXPECT_EQ(file.Tell(), position);
    record.header.localHeaderOffset = 0x10000;
    EXPECT_STREQ(ReadEntryText(file, record, 0), L"");
    EXPECT_EQ(file.Tell(), position);
}

TEST(ZIPMemberText, Damage)
{
    const std::string whole =
        Build({other, BuiltMember("meta.xml", "some text, some more text").Streamed().Flags(0x80)});
    const auto read = [](const std::string& bytes)
    {
        MemoryFile file(bytes);
        Receiver receiver;
        const int result = GetZIPFilenames(receiver, file);
        EXPECT_TRUE(result == 0 || result == -1);
        EXPECT_TRUE(result == 0 || !receiver.kind);
    };
    for (std::size_t size = 0; size < whole.size(); ++size)
    {
        read(whole.substr(0, size));
        read(whole.substr(size));
    }
    std::mt19937 random(1);
    for (int i = 0; i < 10000; ++i)
    {
        std::string bytes = whole;
        for (auto flips = 1 + random() % 3; flips > 0; --flips)
            bytes[random() % bytes.size()] ^= static_cast<char>(1 << random() % 8);
        read(bytes);
    }
}
