// Mail files.
#include "docinfo/mail.h"
#include "docinfo/mail_address.h"
#include "docinfo/punycode.h"
#include "unit/docinfo/document_in_memory.h"

#include <sstream>

using namespace qx;
using namespace qxtest;

namespace
{

using Mail = std::pair<std::string_view, const wchar_t*>; // a field and the text that the reader returns

ReadRecord ReadMailOf(const std::string& header)
{
    return ReadRecord(ReadMail, header + "\r\n\r\n");
}

// Repeats the piece until it almost fills the file window.
std::string Many(std::string_view piece)
{
    return Repeat(piece, FileWindow::kCapacity - 100);
}

} // namespace

TEST(MailReader, Subjects)
{
    const Mail mails[] = {{"=?iso-8859-1?Q?Gr=FC=DFe_an?= alle", L"Gr\u00FC\u00DFe an alle"},
        {"=?utf-8?q?a?= =?ISO-8859-1*de?B?/GE=?= =?*de?Q?a?=", L"=?utf-8?q?a?= \u00FCa =?*de?Q?a?="},
        {"folded\r\n  twice\r\n\tand more", L"folded twiceand more"},
        {"=?utf-8?Q?a=3Db=G1=4?==?utf-8?Q?c?=", L"a=b\u0001c"}, {"=?utf-8?Q?a=00b?=c", L"ac"},
        {"=?no-such-charset?Q?a?=b", L"ab"}, {"(a) <EX:b> \"c\" \\d", L"(a) <EX:b> \"c\" \\d"},
        {"first\r\nSubject: last", L"last"}, {"a\r\nSUBJECT : b\r\nsubject:c", L"a"}};
    for (const auto& [text, expected] : mails)
        EXPECT_EQ(TextOf(ReadMailOf("Subject: " + std::string(text))->Title), ReadableText(expected)) << text;
}

TEST(MailReader, Addresses)
{
    const Mail mails[] = {{"\"Doe, Jane\" <jane@example.org>", L"\"Doe, Jane\" <jane@example.org>"},
        {"jane@xn--bcher-kva.xn--!.xn--mgbh0fb.org", L"jane@b\u00FCcher.xn--!.\u0645\u062B\u0627\u0644.org"},
        {"Jane <jane@xn--bcher-kva.org>", L"Jane <jane@xn--bcher-kva.org>"}, {"<EX:/O=ORG/CN=USER>", L""},
        {"Jane <EX:/O=ORG> <ex:x>", L"Jane  <ex:x>"}, {"lost \"lost\" open\x01 behind", L"open"},
        {"lost a@xn--bcher-kva.org\x7F", L"a@b\u00FCcher.org"}, {"a \t b\\ \\\"c", L"a b \"c"},
        {"=?utf-8?Q?J=C3=BC_?=<a@b>", L"J\u00FC<a@b>"}, {"a=?utf-8?Q?b?=c", L"bac"},
        {"\"=?utf-8?Q?b?= \\\" c", L"\"=?utf-8?Q?b?= \\\" c"},
        {"(=?utf-8?Q?a?= =?utf-8?Q?b_?=  c)", L"(=?utf-8?Q?a?=b c)"}, {"(open =?utf-8?Q?b?= ", L"(openb"},
        {"<open@xn--bcher-kva.org", L"<open@b\u00FCcher.org"}};
    for (const auto& [text, expected] : mails)
    {
        const ReadRecord record = ReadMailOf(std::string("From: ").append(text).append("\r\nTO: ").append(text));
        const std::string address = ReadableText(expected);
        EXPECT_EQ(record.Summary(), std::string("-|-|").append(address).append("|").append(address).append("|-|-|-|-"))
            << text;
    }
    for (const wchar_t* const name : {L"Reply-To", L"RETURN-PATH", L"cc", L"Bcc"})
        EXPECT_EQ(DecodeMailField(L"\\a", name), L"a");
    // The kind and position of each piece.
    const std::pair<const wchar_t*, std::string_view> pieces[] = {
        {L"a  \"b\"(c)<d>e", "1:0 5:1 1:3 3:6 4:9 1:12 "}, {L"\\a@b.c", "4:1 "}, {L"a@b", "1:0 "}, {L"", ""}};
    for (const auto& [field, expected] : pieces)
    {
        std::ostringstream items;
        for (const clsParseItem& item : ParseAddressField(field))
            items << static_cast<int>(item.kind) << ':' << item.position << ' ';
        EXPECT_EQ(items.str(), expected);
    }
}

TEST(MailReader, Dates)
{
    const Mail mails[] = {{"Tue, 03 Feb 2015 10:20:30 +0100", L"2015-2-3 9:20:30"},
        {"03 Feb 2015 10:20:30 EST", L"2015-2-3 15:20:30"}, {"03 Feb 2015 10:20:30", L"2015-2-3 10:20:30"},
        {"1 jan 2016 00:10:00 +1400", L"2015-12-31 10:10:0"}, {"03 xyz 2015 10:20:30", L"2001-1-1 0:0:0"},
        {"32 Feb 2015 10:20:30", L"2001-1-1 0:0:0"}, {"03 Feb 2015 25:20:30", L"2001-1-1 0:0:0"},
        {"03 Feb 2015 10:60:30", L"2001-1-1 0:0:0"}, {"03 Feb 15 10:20:30", L"2001-1-1 0:0:0"},
        {"30 Feb 2015 10:20:30", L"-"}, {"03 Feb 2015 24:00:00 GMT", L"-"}};
    for (const auto& [text, expected] : mails)
        EXPECT_EQ(ReadMailOf("Date: 1 Jan 2001 00:00:00\r\nDate: " + std::string(text)).Summary(),
            "-|-|-|-|-|-|" + ReadableText(expected) + "|-")
            << text;
}

TEST(MailReader, Blocks)
{
    const std::string line = "X: " + std::string(20'000, 'x') + "\r\n";
    const std::string late = line + "Subject: a\r\n\r\n", tooLate = line + line + line + late;
    const Mail mails[] = {{"Subject: a\n\nSubject: b", L"a"}, {"Subject: a: b\r\rSubject: c", L"a: b"},
        {"Subject: a\nFrom: b\n\n", L"-"}, {"Subject: no empty line\r\n", L"-"}, {"", L"-"}, {"Subject: \r\n\r\n", L""},
        {std::string_view("Subject: a\0\r\n\r\n", 15), L"-"}, {late, L"a"}, {tooLate, L"-"}};
    for (const auto& [text, expected] : mails)
    {
        const ReadRecord record(ReadMail, text);
        EXPECT_EQ(record.Result(), 0);
        EXPECT_EQ(TextOf(record->Title), ReadableText(expected)) << text.substr(0, 40);
    }
}

// The samples of RFC 3492, section 7.1, and labels that aren't valid.
TEST(Punycode, Labels)
{
    const std::pair<const wchar_t*, const wchar_t*> labels[] = {
        {L"3B-ww4c5e180e575a65lsy2b", L"3\u5E74B\u7D44\u91D1\u516B\u5148\u751F"}, {L"-> $1.00 <--", L"-> $1.00 <-"},
        {L"PorqunopuedensimplementehablarenEspaol-fmd56a", L"Porqu\u00E9nopuedensimplementehablarenEspa\u00F1ol"},
        {L"ihqwcrb4cv8a8dqg056pqjye", L"\u4ED6\u4EEC\u4E3A\u4EC0\u4E48\u4E0D\u8BF4\u4E2D\u6587"}, {L"", L""},
        {L"e28h", L"\U0001F600"}, {L"dn32g", L"\U0010FFFF"}, {L"hb9b", L"\xD7FF"}, {L"0y0c", L"\uE000"}};
    for (const auto& [label, text] : labels)
        EXPECT_EQ(DecodePunycode(label), text) << String(label).NarrowText();
    for (const wchar_t* const label :
        {L"-a", L"a-!", L"a-9", L"\xFC-kva", L"99999999", L"ib9b", L"zy0c", L"en32g", L"ab-kv9999999999"})
        EXPECT_FALSE(DecodePunycode(label)) << String(label).NarrowText();
}

// Headers that are slow to read with the patterns of the format, or with a search that starts again for each word.
TEST(MailReader, LinearTime)
{
    for (const std::string& header : {Many("a: "), Many("a\r\n"), "Subject: " + Many("=?a?Q? "),
             "Subject: " + Many("=?a*b"), "From: " + Many("=?a?Q? "), "From: (" + Many("=?a?B? "),
             "From: " + Many("=?utf-8?B?YQ==?="), "From: " + Many("\"\" "), "From: a@" + Many("\"."),
             "From: a@xn--" + Many("a"), "From: a@xn--" + Repeat("b", 32'000) + "-" + Repeat("a", 32'000),
             "Date: " + Many("1"), "Date: " + Many("1 "), Many("From: a@b\r\n")})
    {
        ExpectQuick(ReadMail, header + "\r\n\r\n");
        ExpectQuick(ReadMail, header); // without an end
    }
}
