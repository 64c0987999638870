// Mail files.
#include "core/charset/charset_conversion.h"
#include "docinfo/mail.h"
#include "docinfo/mail_address.h"
#include "docinfo/punycode.h"
#include "docinfo/reader_table.h"
#include "unit/docinfo/document_in_memory.h"

#include <gtest/gtest.h>

#include <chrono>
#include <fstream>
#include <iterator>
#include <sstream>

using namespace qx;
using qxtest::DateOf;
using qxtest::ReadRecord;
using qxtest::TextOf;

namespace
{

struct Field
{
    std::string_view value;
    const wchar_t* decoded;
};

ReadRecord ReadHeader(const std::string& header)
{
    return ReadRecord(ReadMail, header + "\r\n\r\n");
}

std::string FileText(const std::string& name)
{
    std::ifstream file(QXUT_TEST_DATA "/../documents/mail/" + name, std::ios::binary);
    EXPECT_TRUE(file.is_open()) << name;
    return std::string(std::istreambuf_iterator<char>(file), {});
}

String FromUTF8(const std::string& text)
{
    return clsCharsetConversionStringCP(65001, text.c_str()).GetWide();
}

std::string Repeat(std::string_view piece)
{
    std::string text;
    while (text.size() + piece.size() <= FileWindow::kCapacity - 100)
        text += piece;
    return text;
}

} // namespace

TEST(MailReader, Subjects)
{
    const Field fields[] = {
        {"=?iso-8859-1?Q?Gr=FC=DFe_an?= alle", L"Gr\xFC\xDF"
                                               L"e an alle"},
        {"=?iso-8859-1?q?a?= =?ISO-8859-1*de?B?/GE=?= =?*de?Q?a?=", L"=?iso-8859-1?q?a?= \xFC"
                                                                    L"a =?*de?Q?a?="},
        {"folded\r\n  twice\r\n\tand more", L"folded twiceand more"},
        {"=?utf-8?Q?a=3Db=G1=4?==?utf-8?Q?c?=", L"a=b\x01"
                                                L"c"},
        {"=?utf-8?Q?a=00b?=c", L"ac"},
        {"=?no-such-charset?Q?a?=b", L"ab"},
        {"(a) <EX:b> \"c\" \\d", L"(a) <EX:b> \"c\" \\d"},
        {"first\r\nSubject: last", L"last"},
        {"a\r\nSUBJECT : b\r\nsubject:c", L"a"},
    };
    for (const Field& field : fields)
        EXPECT_EQ(TextOf(ReadHeader("Subject: " + std::string(field.value))->Title), field.decoded) << field.value;
}

TEST(MailReader, Senders)
{
    const Field fields[] = {
        {"\"Doe, Jane\" <jane@example.org>", L"\"Doe, Jane\" <jane@example.org>"},
        {"jane@xn--bcher-kva.xn--!.xn--mgbh0fb.org", L"jane@b\xFC"
                                                     L"cher.xn--!.\x645\x62B\x627\x644.org"},
        {"Jane <jane@xn--bcher-kva.org>", L"Jane <jane@xn--bcher-kva.org>"},
        {"<EX:/O=ORG/CN=USER>", L""},
        {"Jane <EX:/O=ORG> <ex:x>", L"Jane  <ex:x>"},
        {"lost \"lost\" open\x01 behind", L"open"},
        {"lost a@xn--bcher-kva.org\x7F", L"a@b\xFC"
                                         L"cher.org"},
        {"a \t b\\ \\\"c", L"a b \"c"},
        {"=?utf-8?Q?J=C3=BC_?=<a@b>", L"J\xFC<a@b>"},
        {"a=?utf-8?Q?b?=c", L"bac"},
        {"\"=?utf-8?Q?b?= \\\" c", L"\"=?utf-8?Q?b?= \\\" c"},
        {"(=?utf-8?Q?a?= =?utf-8?Q?b_?=  c)", L"(=?utf-8?Q?a?=b c)"},
        {"(open =?utf-8?Q?b?= ", L"(openb"},
        {"<open@xn--bcher-kva.org", L"<open@b\xFC"
                                    L"cher.org"},
    };
    for (const Field& field : fields)
    {
        const ReadRecord record = ReadHeader("From: " + std::string(field.value) + "\r\nTo: x");
        EXPECT_EQ(TextOf(record->Author), field.decoded) << field.value;
        EXPECT_EQ(TextOf(record->LastAuthor), L"x") << field.value;
    }
    for (const wchar_t* const name : {L"to", L"Reply-To", L"RETURN-PATH", L"cc", L"Bcc"})
        EXPECT_EQ(DecodeMailField(L"\\a", name), L"a");

    using Items = std::vector<std::pair<int, std::size_t>>; // kinds and positions
    const std::pair<const wchar_t*, Items> pieces[] = {
        {L"a  \"b\"(c)<d>e", {{1, 0}, {5, 1}, {1, 3}, {3, 6}, {4, 9}, {1, 12}}}, {L"a@b.c", {{4, 0}}},
        {L"\"a b\"@\"c d\".e", {{1, 0}, {1, 5}, {1, 11}}}, {L"\\a@b.c", {{4, 1}}}, {L"a@b", {{1, 0}}}, {L"", {}}};
    for (const auto& [field, expected] : pieces)
    {
        Items items;
        for (const clsParseItem& item : ParseAddressField(field))
            items.emplace_back(static_cast<int>(item.kind), item.position);
        EXPECT_EQ(items, expected) << String(field).NarrowText();
    }
}

TEST(MailReader, Dates)
{
    const Field fields[] = {
        {"Tue, 03 Feb 2015 10:20:30 +0100", L"2015-2-3 9:20:30"},
        {"03 Feb 2015 10:20:30 EST", L"2015-2-3 15:20:30"},
        {"03 Feb 2015 10:20:30", L"2015-2-3 10:20:30"},
        {"1 jan 2016 00:10:00 +1400", L"2015-12-31 10:10:0"},
        {"1 Jan 2016 00:10:00 GMT", L"2016-1-1 0:10:0"},
        {"03 xyz 2015 10:20:30", L"2001-1-1 0:0:0"},
        {"32 Feb 2015 10:20:30", L"2001-1-1 0:0:0"},
        {"03 Feb 2015 25:20:30", L"2001-1-1 0:0:0"},
        {"03 Feb 2015 10:60:30", L"2001-1-1 0:0:0"},
        {"03 Feb 15 10:20:30", L"2001-1-1 0:0:0"},
        {"30 Feb 2015 10:20:30", L"-"},
        {"03 Feb 2015 24:00:00 +0100", L"-"},
    };
    for (const Field& field : fields)
    {
        const ReadRecord record = ReadHeader("Date: 1 Jan 2001 00:00:00\r\nDate: " + std::string(field.value));
        EXPECT_EQ(DateOf(record->Created), field.decoded) << field.value;
        EXPECT_EQ(DateOf(record->LastSaved), L"-");
    }
}

TEST(MailReader, Blocks)
{
    const std::string filler = "X: " + std::string(20'000, 'x') + "\r\n";
    const Field files[] = {
        {"Subject: a\n\nSubject: b", L"a"},
        {"Subject: a: b\r\rSubject: c", L"a: b"},
        {"Subject: a\nFrom: b\n\n", L"-"},
        {"Subject: no empty line\r\n", L"-"},
        {"", L"-"},
        {"Subject: \r\n\r\n", L""},
        {std::string_view("Subject: a\0\r\n\r\n", 15), L"-"},
    };
    for (const Field& file : files)
    {
        const ReadRecord record(ReadMail, file.value);
        EXPECT_EQ(record.Result(), 0);
        EXPECT_EQ(TextOf(record->Title), file.decoded) << file.value;
    }
    EXPECT_EQ(TextOf(ReadHeader(filler + "Subject: a")->Title), L"a");
    EXPECT_EQ(TextOf(ReadHeader(filler + filler + filler + filler + "Subject: a")->Title), L"-");
}

// Compared with Python's email package; answers.tsv explains the differences.
TEST(MailReader, RealMails)
{
    std::istringstream answers(FileText("answers.tsv"));
    int rows = 0;
    for (std::string line; std::getline(answers, line); ++rows)
    {
        std::istringstream row(line);
        std::string file, field, expected, own;
        std::getline(std::getline(std::getline(std::getline(row, file, '\t'), field, '\t'), expected, '\t'), own, '\t');
        const ReadRecord record(ReadMail, FileText(file));
        const auto found = field == "Subject" ? TextOf(record->Title)
                           : field == "From"  ? TextOf(record->Author)
                           : field == "To"    ? TextOf(record->LastAuthor)
                                              : DateOf(record->Created);
        EXPECT_EQ(found, FromUTF8(own == "=" ? expected : own).View()) << line;
    }
    EXPECT_EQ(rows, 20);
}

TEST(MailReader, TakesMailByItsExtension)
{
    const std::string storage = "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1";
    const std::tuple<const wchar_t*, std::string, bool> files[] = {{L"a.eml", "", true}, {L"a.EML", storage, true},
        {L"a.msg", "Subject: a\r\n\r\n", true}, {L"a.msg", storage, false}, {L"eml", "Subject: a\r\n\r\n", false}};
    for (const auto& [path, bytes, isMail] : files)
    {
        const qxtest::MemoryStream stream(bytes);
        clsDocFile file(stream);
        FileWindow window(file);
        const ReaderRow* const row = ChooseReader(String(path), window);
        EXPECT_EQ(row != nullptr && row->read == ReadMail, isMail) << String(path).NarrowText();
    }
}

// The samples of RFC 3492, section 7.1, and labels that aren't valid.
TEST(Punycode, Labels)
{
    const std::pair<const wchar_t*, const wchar_t*> labels[] = {
        {L"egbpdaj6bu4bxfgehfvwxn",
            L"\x644\x64A\x647\x645\x627\x628\x62A\x643\x644\x645\x648\x634\x639\x631\x628\x64A\x61F"},
        {L"PorqunopuedensimplementehablarenEspaol-fmd56a", L"Porqu\xE9nopuedensimplementehablarenEspa\xF1ol"},
        {L"3B-ww4c5e180e575a65lsy2b", L"3\x5E74"
                                      L"B\x7D44\x91D1\x516B\x5148\x751F"},
        {L"-> $1.00 <--", L"-> $1.00 <-"}, {L"e28h", L"\xD83D\xDE00"}, // U+1F600
        {L"dn32g", L"\xDBFF\xDFFF"}, {L"hb9b", L"\xD7FF"}, {L"0y0c", L"\xE000"}, {L"", L""}};
    for (const auto& [label, text] : labels)
        EXPECT_EQ(DecodePunycode(label), text) << String(label).NarrowText();
    for (const wchar_t* const label :
        {L"-a", L"a-!", L"a-9", L"\xFC-kva", L"99999999", L"ib9b", L"zy0c", L"en32g", L"ab-kv9999999999"})
        EXPECT_FALSE(DecodePunycode(label)) << String(label).NarrowText();
}

// Built to be slow: with the patterns of the format, or with a search that starts again for each word.
TEST(MailReader, LinearTime)
{
    for (const std::string& header :
        {Repeat("a: "), Repeat("a\r\n"), "Subject: " + Repeat("=?a?Q? "), "Subject: " + Repeat("=?a*b"),
            "From: " + Repeat("=?a?Q? "), "From: (" + Repeat("=?a?B? "), "From: " + Repeat("=?utf-8?B?YQ==?="),
            "From: " + Repeat("\"\" "), "From: a@" + Repeat("\"."), "From: a@xn--" + Repeat("a"),
            "From: a@xn--" + Repeat("b").substr(33'000) + "-" + Repeat("a").substr(33'000), "Date: " + Repeat("1"),
            "Date: " + Repeat("1 "), Repeat("From: a@b\r\n")})
    {
        const auto begin = std::chrono::steady_clock::now();
        EXPECT_EQ(ReadHeader(header).Result(), 0);
        EXPECT_EQ(ReadRecord(ReadMail, header).Result(), 0); // without an end
        const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - begin;
        EXPECT_LT(seconds.count(), 5) << header.substr(0, 60);
    }
}
