// Documents of old word processors.
#include "docinfo/word2.h"
#include "docinfo/wordperfect.h"
#include "support/record_bytes.h"
#include "unit/docinfo/document_in_memory.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

using namespace qx;
using namespace qxtest;

namespace
{

// Returns a document of Word for Windows 2 whose table contains these texts. The table's stored size is too large by
// `excess`.
std::string Word2Of(const std::vector<std::string>& texts, int excess = 0)
{
    std::string table;
    for (const std::string& text : texts)
        table += static_cast<char>(text.size()) + text;
    const auto size = static_cast<std::uint16_t>(table.size() + 2 + static_cast<std::size_t>(excess));
    std::string file("\xDB\xA5\x2D\0", 4);
    file.resize(280);
    return file + BytesOfRecord(std::uint32_t{284}) + BytesOfRecord(size) + table;
}

// Returns a record of an extended document summary; its label and value are 16-bit texts.
std::string WordPerfectRecord(std::uint16_t tag, std::u16string_view value)
{
    const std::string texts = BytesOfWideText(u"label") + BytesOfWideText(value);
    return BytesOfRecord(static_cast<std::uint16_t>(6 + texts.size())) + BytesOfRecord(tag) + "xx" + texts;
}

// Returns an index entry for a summary of this size, which begins `offset` bytes after the prefix.
std::string WordPerfectEntry(std::uint32_t offset, std::uint32_t size)
{
    return std::string("\0\x12\0\0\0\0", 6) + BytesOfRecord(size) + BytesOfRecord(512 + offset);
}

// Returns a WordPerfect document; its index has room for 30 entries.
std::string WordPerfectOf(const std::vector<std::string>& entries, std::string_view data)
{
    std::string file("\xFFWPC\0\0\0\0\0\0\x02\0\0\0\x10\0\x02\0", 18);
    file += BytesOfRecord(static_cast<std::uint16_t>(entries.size() + 1));
    file.resize(30);
    for (const std::string& entry : entries)
        file += entry;
    file.resize(512);
    return file.append(data);
}

using Texts = std::vector<std::string>;

constexpr auto kRefused = "-1 -|-|-|-|-|-|-|-", kEmptyRecord = "0 -|-|-|-|-|-|-|-", kTitle = "0 title|-|-|-|-|-|-|-";

} // namespace

TEST(Word2, TextsOfTheTable)
{
    const Texts all = {"no", "no", "title", "", "keys", "comments", "author", "last", "no"}, some = {"a", "b", "title"};
    const std::tuple<Texts, int, const char*> tables[] = {{all, 0, "0 title||author|last|keys|comments|-|-"},
        {some, 0, kTitle}, {some, -2, "0 tit|-|-|-|-|-|-|-"}, {{}, 0, kEmptyRecord}, {{}, -1, kRefused},
        {all, 1, kRefused}};
    for (const auto& [texts, excess, summary] : tables)
        EXPECT_EQ(ReadRecord(ReadWord2, Word2Of(texts, excess)).ResultAndSummary(), summary) << excess;
}

TEST(WordPerfect, IndexAndRecords)
{
    const std::string title = WordPerfectRecord(17, u"title"), author = WordPerfectRecord(5, u"author");
    const std::string all = WordPerfectRecord(1, u"a\uF90A\u0147\u01FFb") + author + WordPerfectRecord(2, u"no") +
                            title + WordPerfectRecord(26, u"\u0126\u0117\u010E") + WordPerfectRecord(46, u"subject") +
                            WordPerfectRecord(48, u"");
    const auto size = static_cast<std::uint32_t>(title.size()), allSize = static_cast<std::uint32_t>(all.size());
    const std::string entry = WordPerfectEntry(0, size), second = WordPerfectEntry(size, 900);
    const std::tuple<Texts, std::string, const char*> files[] = {
        {{WordPerfectEntry(0, allSize)}, all, "0 title|subject|author||<c7><df><b0>|a<d><a><fc>b|-|-"},
        {{WordPerfectEntry(9999, size)}, title, kEmptyRecord},
        {{entry}, title + author, kTitle},                  // the size covers the first record only
        {{WordPerfectEntry(0, 7)}, title + author, kTitle}, // the size ends within the record
        {{WordPerfectEntry(0, 900), second}, title + std::string("\5\0\5\0xx", 6) + author, kTitle},
        {{entry, second}, title + author.substr(0, 20), kTitle}};
    for (const auto& [entries, data, summary] : files)
        EXPECT_EQ(ReadRecord(ReadWordPerfect, WordPerfectOf(entries, data)).ResultAndSummary(), summary);
    // Changes single bytes. The count in byte 18 includes the head of the index. Byte 14 is the offset of the index,
    // which can't begin within the prefix's own fields.
    const std::tuple<std::size_t, char, const char*> changes[] = {{1, 'w', kRefused}, {10, 1, kRefused},
        {12, 1, kRefused}, {16, 1, kRefused}, {18, 1, kRefused}, {31, 0x11, kRefused}, {14, 3, kTitle}};
    for (const auto& [offset, value, summary] : changes)
    {
        std::string bytes = WordPerfectOf({entry}, title);
        bytes[offset] = value;
        EXPECT_EQ(ReadRecord(ReadWordPerfect, bytes).ResultAndSummary(), summary) << offset;
    }
}

TEST(WordPerfect, WorkIsBounded)
{
    const std::string records =
        WordPerfectRecord(17, u"title") + Repeat(std::string_view("\x06\0\x02\0xx", 6), 600'000);
    EXPECT_EQ(ReadRecord(ReadWordPerfect,
                  WordPerfectOf({WordPerfectEntry(0, 900'000)}, records + WordPerfectRecord(17, u"second")))
                  .ResultAndSummary(),
        kTitle);

    // An index after the prefix, whose entries all refer to the same records.
    std::string file = WordPerfectOf({}, std::string("\2\0\xFF\xFF\0\0\0\0\0\0\0\0\0\0", 14));
    file[14] = '\0';
    file[15] = '\2';
    file += Repeat(WordPerfectEntry(0xFFFF * 14, 0xFFFFFFFF), 0xFFFE * 14);
    ExpectQuick(ReadWordPerfect, file + WordPerfectRecord(17, std::u16string(32'000, u'x')));
}
