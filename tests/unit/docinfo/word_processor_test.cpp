// Documents of old word processors.
#include "docinfo/word2.h"
#include "docinfo/wordperfect.h"
#include "unit/docinfo/document_in_memory.h"
#include "unit/docinfo/word_builder.h"

using namespace qx;
using qxtest::LittleEndianBytes;
using qxtest::ReadRecord;
using qxtest::TextOf;
using qxtest::Word2Of;
using qxtest::WordPerfectEntry;
using qxtest::WordPerfectOf;
using qxtest::WordPerfectRecord;

TEST(Word2, TextsOfTheTable)
{
    const std::vector<std::string> texts = {"no", "no", "title", "", "keys", "comments", "author", "last", "no"};
    EXPECT_EQ(ReadRecord(ReadWord2, Word2Of(texts)).Summary(), "title||author|last|keys|comments|-|-");
    EXPECT_EQ(ReadRecord(ReadWord2, Word2Of({"a", "b", "title"})).Summary(), "title|-|-|-|-|-|-|-");
    // The table ends within a text.
    EXPECT_EQ(TextOf(ReadRecord(ReadWord2, Word2Of({"a", "b", "title"}, -2))->Title), "tit");
    EXPECT_EQ(ReadRecord(ReadWord2, Word2Of({})).Result(), 0);
    EXPECT_EQ(ReadRecord(ReadWord2, Word2Of({}, -1)).Result(), -1);
    EXPECT_EQ(ReadRecord(ReadWord2, Word2Of(texts, 1)).Result(), -1);
}

TEST(WordPerfect, FieldsAndCharacters)
{
    const std::string data = WordPerfectRecord(1, u"a\uF90A\u0147\u01FFb") + WordPerfectRecord(5, u"author") +
                             WordPerfectRecord(2, u"no") + WordPerfectRecord(17, u"title") +
                             WordPerfectRecord(26, u"\u0126\u0117\u010E") + WordPerfectRecord(46, u"subject") +
                             WordPerfectRecord(48, u"");
    const auto size = static_cast<std::uint32_t>(data.size());
    EXPECT_EQ(ReadRecord(ReadWordPerfect, WordPerfectOf({WordPerfectEntry('\x12', 0, size)}, data)).Summary(),
        "title|subject|author||<c7><df><b0>|a<d><a><fc>b|-|-");
}

TEST(WordPerfect, IndexAndRecords)
{
    const std::string title = WordPerfectRecord(17, u"title"), author = WordPerfectRecord(5, u"author");
    const auto size = static_cast<std::uint32_t>(title.size());
    const auto read = [&](const std::vector<std::string>& entries, const std::string& data)
    {
        const ReadRecord record(ReadWordPerfect, WordPerfectOf(entries, data));
        return std::to_string(record.Result()) + TextOf(record->Title) + "|" + TextOf(record->Author);
    };
    const std::string entry = WordPerfectEntry('\x12', 0, size);
    EXPECT_EQ(read({WordPerfectEntry('\x11', 0, size)}, title), "-1-|-");
    EXPECT_EQ(read({WordPerfectEntry('\x12', 9999, size)}, title), "0-|-");
    // The size covers the first record only, or ends within it.
    EXPECT_EQ(read({entry}, title + author), "0title|-");
    EXPECT_EQ(read({WordPerfectEntry('\x12', 0, 7)}, title + author), "0title|-");
    EXPECT_EQ(read({WordPerfectEntry('\x12', 0, 900), WordPerfectEntry('\x12', size, 900)},
                  title + std::string("\5\0\5\0xx", 6) + author),
        "0title|-");
    EXPECT_EQ(read({entry, WordPerfectEntry('\x12', size, 900)}, title + author.substr(0, 20)), "0title|-");
    // The count includes the head of the index.
    std::string file = WordPerfectOf({entry, entry}, title);
    file[18] = 2;
    file[30 + 1] = 0;
    EXPECT_EQ(ReadRecord(ReadWordPerfect, file).Result(), -1);
    for (const std::size_t change : {1, 10, 12, 16, 18})
    {
        std::string bytes = WordPerfectOf({entry}, title);
        EXPECT_EQ(ReadRecord(ReadWordPerfect, bytes).Result(), 0);
        bytes[change] = change == 18 ? '\0' : '\1';
        EXPECT_EQ(ReadRecord(ReadWordPerfect, bytes).Result(), -1) << change;
    }
    std::string low = WordPerfectOf({entry}, title);
    low[14] = 3; // the index can't begin within the prefix's own fields
    EXPECT_EQ(ReadRecord(ReadWordPerfect, low).Result(), 0);
}

TEST(WordPerfect, WorkIsBounded)
{
    std::string data = WordPerfectRecord(17, u"first");
    for (int i = 0; i < 100'000; ++i)
        data += std::string("\x06\0\x02\0xx", 6);
    data += WordPerfectRecord(17, u"second");
    const auto size = static_cast<std::uint32_t>(data.size());
    EXPECT_EQ(
        TextOf(ReadRecord(ReadWordPerfect, WordPerfectOf({WordPerfectEntry('\x12', 0, size)}, data))->Title), "first");

    // Each entry refers to the same records.
    std::string file = WordPerfectOf({}, "");
    file[14] = '\0';
    file[15] = '\2';
    file += std::string("\2\0\xFF\xFF", 4) + std::string(10, '\0');
    for (int i = 1; i < 0xFFFF; ++i)
        file += WordPerfectEntry('\x12', 0xFFFF * 14, 0xFFFFFFFF);
    file += LittleEndianBytes(std::uint16_t{0xFFFF}) + LittleEndianBytes(std::uint16_t{17}) + std::string(65'531, 'x');
    qxtest::ExpectQuick(ReadWordPerfect, file);
}
