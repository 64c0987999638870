// Messages of mail programs.
#include "docinfo/document_list.h"
#include "docinfo/message.h"
#include "support/compound_builder.h"
#include "support/damage.h"
#include "support/record_bytes.h"
#include "support/temp_folder.h"
#include "unit/docinfo/document_in_memory.h"

#include <map>
#include <tuple>

using namespace qx;
using namespace qxtest;

namespace
{

using namespace std::string_literals;

// Texts by tag. Tags are hexadecimal, in upper case.
using Properties = std::map<std::string, std::string>;

constexpr std::uint32_t kSubmitTag = 0x00390040, kDeliveryTag = 0x0E060040;
const std::string kSent = "\x00\x05\xB5\x7D\x96\x8D\xC0\x01"s;      // 2001-02-03 04:05:06
const std::string kDelivered = "\x80\x9B\x4D\x7E\x96\x8D\xC0\x01"s; // a second later

std::string TimeProperty(std::uint32_t tag, const std::string& value)
{
    return BytesOfRecord(tag) + "flag" + value + "behind..";
}

// Returns a message file. Its recipients are numbered from `firstNumber` on.
std::string MessageOf(const Properties& texts, const std::string& times = "",
    const std::vector<Properties>& recipients = {}, int firstNumber = 0)
{
    CompoundBuilder builder;
    const auto add = [&](const Properties& properties, const std::string& stream)
    {
        for (const auto& [tag, text] : properties)
            builder.AddStream("__substg1.0_" + tag, text);
        builder.AddStream("__properties_version1.0", stream);
    };
    add(texts, std::string(32, 'x') + times);
    for (const Properties& recipient : recipients)
    {
        builder.AddStorage("__recip_version1.0_#0000000" + std::to_string(firstNumber++));
        add(recipient, "");
    }
    return builder.Bytes();
}

class Message : public testing::Test
{
protected:
    clsAutoRelease<clsDocu*> Read(const std::string& bytes)
    {
        const String path = _folder.Make(L"a.Msg", bytes);
        SetWriteTime(path, {0, 0x01C20000}); // 2002-5-20 13:12:31
        return clsDocuList(0).Get(path, 1);
    }

    TempFolder _folder;
};

} // namespace

TEST_F(Message, TextsAndRecipients)
{
    const std::string large(5'000, 'x');
    const Properties none, named = {{"3001001E", "Name"}, {"3003001E", "no"}}, address = {{"3003001E", "address"}};
    const std::tuple<Properties, std::vector<Properties>, std::string> cases[] = {{{}, {}, "|-||-"},
        {{{"0037001E", "subject"}, {"0042001E", "name"}, {"0065001E", "address"}}, {none}, "subject|-|name|"},
        {{{"0037001F", "\xE4\0b\0c"s}, {"0C1A001E", "sender"}, {"0C1F001E", "x"}}, {}, "<e4>b|-|sender|-"},
        // If a text exists but is empty, the other form isn't searched for.
        {{{"0037001E", ""}, {"0037001F", "a\0"s}, {"0042001E", "\0x"s}, {"0065001E", "address"}}, {named, address},
            "|-|address|Name; address"},
        {{{"0037001E", large}, {"0C1F001F", "a\0\0\0b\0"s}}, {none, named, none, address},
            large + "|-|a|Name; ; address"}};
    for (const auto& [texts, recipients, expected] : cases)
    {
        const clsAutoRelease<clsDocu*> record = Read(MessageOf(texts, "", recipients));
        EXPECT_STREQ(record->reader, L"message");
        EXPECT_EQ(Summary(*record), expected + "|-|-|-|2002-5-20 13:12:31");
    }
    // The only recipient has the number 1. Reading starts at 0 and ends at the first missing number.
    EXPECT_EQ(TextOf(Read(MessageOf({}, "", {named}, 1))->LastAuthor), "-");
    EXPECT_EQ(Summary(*clsDocuList(0).Get(Wide(QXUT_TEST_DOCUMENTS "/message/letter.msg"), 1)),
        "R<e4>der & Achsen|-|Ann Smith|Bob Brown; carl@example.com|-|-|2001-2-3 4:5:6|2001-2-3 4:5:7")
        << "of another program's storage";
}

TEST_F(Message, Times)
{
    const std::string sent = TimeProperty(kSubmitTag, kSent), delivered = TimeProperty(kDeliveryTag, kDelivered);
    const std::string other = TimeProperty(0x00390041, kDelivered);
    const std::string never = TimeProperty(kSubmitTag, std::string(8, '\xFF'));
    const std::pair<std::string, std::string> cases[] = {{other + sent, "2001-2-3 4:5:6|2002-5-20 13:12:31"},
        {delivered + other, "2001-2-3 4:5:7|2002-5-20 13:12:31"}, {delivered + sent, "2001-2-3 4:5:6|2001-2-3 4:5:7"},
        {never + delivered, "2001-2-3 4:5:7|2002-5-20 13:12:31"},
        {sent + delivered.substr(0, 23), "2001-2-3 4:5:6|2002-5-20 13:12:31"}, {"x" + sent, "-|2002-5-20 13:12:31"}};
    for (const auto& [times, expected] : cases)
        EXPECT_EQ(Summary(*Read(MessageOf({}, times))), "|-||-|-|-|" + expected);
}

#ifdef __linux__ // Wine's storages don't survive damaged files

TEST_F(Message, SurvivesDamage)
{
    const std::string whole = MessageOf({{"0037001E", "subject"}, {"0042001F", "a\0"s}},
        TimeProperty(kSubmitTag, kSent) + TimeProperty(kDeliveryTag, kDelivered), {{{"3001001E", "name"}}, {}});
    const clsAutoRelease<clsDocu*> record = EmptyRecord();
    const auto check = [&](const std::string& bytes)
    {
        DeleteFileW(_folder.Path(L"a.msg").Text()); // overwriting would flush the file each time, which is slow
        ReadMessage(*record, _folder.Make(L"a.msg", bytes));
        EXPECT_LT(TextOf(record->LastAuthor).size(), 20 * whole.size());
    };
    Damage(whole, 10'000, check);
}

#endif
