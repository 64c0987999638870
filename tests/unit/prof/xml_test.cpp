// The two XML forms: output byte by byte, input, and every message.
#include "prof/path.h"
#include "support/debug_lines.h"
#include "unit/prof/job_support.h"

#include <chrono>
#include <random>
#include <tuple>
#include <vector>

using namespace qx;
using namespace qxtest;

namespace
{

constexpr std::wstring_view kXmlHead = L"<?xml version=\"1.0\" encoding=\"UTF-16\" standalone=\"yes\"?>\r\n";
constexpr std::string_view kXfdfHead = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n";
constexpr std::string_view kXfdfTag = "<xfdf xmlns=\"http://ns.adobe.com/xfdf/\" xml:space=\"preserve\">\r\n";

std::string Utf16(std::wstring_view text)
{
    return "\xFF\xFE" + Bytes(text);
}

std::string XmlSource(std::wstring_view lines)
{
    return Utf16(kXmlHead) + Bytes(lines);
}

std::string XfdfSource(std::string_view lines)
{
    return std::string(kXfdfHead) + std::string(lines);
}

// Returns the tree that is loaded. If the source is refused, the tree is preceded by the logged message.
String Loaded(std::string_view bytes, const JobHolder& job = NewJob())
{
    const MemoryStream stream(bytes);
    clsFileRO file(stream);
    const DebugLines lines;
    const bool isLoaded = job->Load(file);
    EXPECT_EQ(job->Error(), isLoaded ? kProfOk : kProfMalformed);
    EXPECT_EQ(lines.Count(), isLoaded ? 0U : 2U);
    String tree = Tree(job->Root());
    if (isLoaded)
        return tree;
    const String message = lines.Entries().front().text;
    EXPECT_EQ(lines.CountOf(L"(Stream): error '"), 1U);
    return message + L"|" + tree;
}

String LoadError(int line, const wchar_t* message, const wchar_t* tree = L"")
{
    return String(String::kFormatted, L"PROF load error line %d: '%s'|%s", line, message, tree);
}

std::string Saved(const JobHolder& job, unsigned form)
{
    const MemoryStream stream;
    EXPECT_EQ(job->Serialise(stream, form), kProfOk);
    return stream.Bytes();
}

JobHolder SampleJob()
{
    JobHolder job = NewJob();
    clsItemList& root = job->Root();
    SetLeafByPath(root, L"Title", L" Report <&> \"'\r\n\t\x01\x20AC\xD83D\xDE00");
    SetLeafByPath(root, L"1/2/a=\"b\"", L"");
    CreateListByPath(root, L"1/2/3");
    SetLeafByPath(root, L"1/\r", L"line\n\rend");
    return job;
}

// Returns nested fields. Each field begins with `each`, and the innermost one has this many values.
std::string NestedFields(int depth, int values, const std::string& each = "")
{
    std::string lines(kXfdfTag);
    for (int i = 0; i < depth; ++i)
        lines += "<field name=\"x\">\n" + each;
    for (int i = 0; i < values; ++i)
        lines += "<value>1</value>\n";
    return XfdfSource(lines);
}

} // namespace

TEST(ProfXml, EveryByteThatIsWritten)
{
    const std::wstring_view entries =
        L"\r\n<!-- DTD -->\r\n<!DOCTYPE profile [\r\n"
        L" <!ENTITY cr \"&#x000a;<!--CR-->\">\r\n <!ENTITY tab \"&#x0009;<!--TAB-->\">\r\n"
        L" <!ELEMENT profile (list*, item*)*>\r\n"
        L"  <!ELEMENT list (list?, item?)*>\r\n  <!ATTLIST list name CDATA #REQUIRED>\r\n"
        L"   <!ELEMENT item (#PCDATA)>\r\n   <!ATTLIST item name CDATA #REQUIRED>\r\n"
        L"   <!ATTLIST item xml:space (default|preserve) \"preserve\"> ]>\r\n"
        L"<!-- DATA -->\r\n<profile>\r\n"
        L" <item name=\"Title\"> Report &lt;&amp;&gt; &quot;&apos;&cr;&tab;&#x0001;\x20AC\xD83D\xDE00</item>\r\n"
        L" <list name=\"1\">\r\n  <list name=\"2\">\r\n"
        L"   <item name=\"a=&quot;b&quot;\"></item>\r\n   <list name=\"3\">\r\n   </list>\r\n"
        L"  </list>\r\n  <item name=\"&cr;\">line&cr;&cr;end</item>\r\n"
        L" </list>\r\n</profile>\r\n";
    const std::string head = Utf16(kXmlHead.substr(0, kXmlHead.size() - 2));
    const JobHolder job = SampleJob();
    for (const unsigned form : {1u, 3u, 15u, 1u + 0x30u})
        EXPECT_EQ(Saved(job, form), head + Bytes(entries)) << form;
    EXPECT_STREQ(Loaded(head + Bytes(entries)), L"Title= Report <&> \"'\r\n\t\x01\x20AC\xD83D\xDE00;"
                                                L"[1]{[2]{a=\"b\"=;[3]{}}\r\n=line\r\n\r\nend;}");
    EXPECT_EQ(Saved(NewJob(), 1), "");

    // At level 4 the indentation becomes a tab.
    const JobHolder deep = NewJob();
    SetLeafByPath(deep->Root(), L"1/2/3/4/a", L"");
    EXPECT_NE(Saved(deep, 1).find(Bytes(L"\r\n\t<list name=\"4\">\r\n\t <item name=\"a\"></item>\r\n\t</list>\r\n")),
        std::string::npos);

    const JobHolder object = NewJob(ProfMode::Hold, L"ob<ject", 3);
    SetLeafByPath(object->Root(), L"a", L"1");
    EXPECT_EQ(
        Saved(object, 1), Bytes(L"   <list name=\"ob&lt;ject\">\r\n\t<item name=\"a\">1</item>\r\n   </list>\r\n"));
    const JobHolder rootObject = NewJob(ProfMode::Hold, L"/", 2);
    SetLeafByPath(rootObject->Root(), L"a", L"1");
    EXPECT_EQ(Saved(rootObject, 1), Bytes(L"  <item name=\"a\">1</item>\r\n"));
}

TEST(ProfXml, WhatIsReadAndWhatIsRefused)
{
    // The lines after the first one, and the result.
    const std::pair<std::wstring_view, String> cases[] = {
        {L"<profile>\n<item name=\"a\">b</item>\n</profile>\n", L"a=b;"},
        {L"<profile>\n<list name=\"l\">\n<item name=\"a\">b</item>\n", L"[l]{a=b;}"}, // missing ends are accepted
        {L"<PROFILE>\n<LIST name=\"l\">\n</List>\n<Item name=\"a\">b</item>\n</Profile>\nrest", L"[l]{}a=b;"},
        {L"<profile>\n<item xml:space=\"preserve\" name=\"a\" x='1'> b </item> rest\n", L"a= b ;"},
        {L"<profile>\n<list a=\"b\" name=\"l\" c>\n", L"[l]{}"},
        {L"<profile>\n<item name=\"a\">1</item></item>\n<item name=\"\"></item>\n", L"a=1;=;"},
        {L"<profile>\n<list name=\"[a]\">\n</list>\n<list name=\"&lt;&#x41;\">\n", L"[a]{}[<A]{}"},
        {L"<profile>\n</list>\n<item name=\"a\">b</item>\n", L""}, // the root's level has ended
        {L"<other>\n\n \t \n<profile>\n<items>\n</item>\n<?x?>\n</profile>\n", L""}, {L"", L""},
        // sequences for characters
        {L"<profile>\n<item name=\"a\">&LT;&Cr;&foo;&;&&amp;lt;</item>\n", L"a=&LT;&Cr;&foo;&;&&lt;;"},
        {L"<profile>\n<item name=\"a\">&#x41;&#65;&#xe4;&#xE4;&#x000a;</item>\n", L"a=AA\xE4\xE4\n;"},
        {L"<profile>\n<item name=\"a\">&#x41 and the rest;b&#65x;b&#x2338</item>\n", L"a=AbAb&#x2338;"},
        {L"<profile>\n<item name=\"a\">&#xFFFF;&#x10041;&#65601;&#x123456789ABC0042;</item>\n", L"a=\xFFFF"
                                                                                                L"AAB;"},
        {L"<profile>\n<item name=\"a\">&#x;&#;&#0;&#x10000;&#xg;&#X41;</item>\n",
            L"a=&#x;&#;&#0;&#x10000;&#xg;&#X41;;"}, // no zero is produced
        // comments
        {L"<profile>\n<!-- a --><item name=\"a\">b</item>\n", L"a=b;"},
        {L"<profile>\n<!-- a\t-->\t <item name=\"a\">b</item>\n", L"a=b;"},
        {L"<profile>\n<!--\n<item name=\"a\">b</item>\n--> <item name=\"c\">d</item>\n", L"c=d;"},
        {L"<profile>\n<!-- a\n<item name=\"a\">b</item> --> \n<item name=\"c\">d</item>\n", L"c=d;"},
        {L"<profile>\n<list name=\"l\">\n<!--\n</list>\n--></list>\n<item name=\"c\">d</item>\n", L"[l]{}c=d;"},
        {L"<profile>\n<!-- a --> <!-- b\n<item name=\"c\">d</item>\n",
            L"c=d;"},                                              // only one comment per line is recognised
        {L"<profile>\n<!---->\n<item name=\"c\">d</item>\n", L""}, // without a blank the comment doesn't end
        {L"<profile>\n<!-- a --> text\n", LoadError(3, L"prof::xml: bad format")},
        {L"<profile>\n<!--\ntext -->\n", LoadError(4, L"prof::xml: bad format")},
        {L"<profile>\n<!--\n-->text\n", LoadError(4, L"prof::xml: bad format")},
        // messages
        {L"<profile>\n<item name=\"a\">b</item>\ntext\n", LoadError(4, L"prof::xml: bad format", L"a=b;")},
        {L"<item name=\"a\">b</item>\n", LoadError(2, L"prof::xml::item bad nesting level (becomes negative)")},
        {L"<list name=\"a\">\n", LoadError(2, L"prof::xml::list: bad nesting level")},
        {L"</list>\n", LoadError(2, L"prof::xml::profile: bad nesting level (becomes negative)")},
        {L"<profile>\n<profile>\n", LoadError(3, L"prof::xml::profile: bad nesting level (should be -1)")},
        {L"</profile>\n", LoadError(2, L"prof::xml::profile: bad nesting level (should be 0)")},
        {L"<profile>\n<item name=\"a\">b</item>\n<list name=\"l\">\n<item name=\"c\">d</item>\n</profile>\n",
            LoadError(6, L"prof::xml::profile: bad nesting level (should be 0)", L"a=b;")}, // unfinished list dropped
        {L"<profile>\n<xfdf x>\n", LoadError(3, L"prof::xml::xfdf: bad nesting level (should be -1)")},
        {L"</xfdf>\n", LoadError(2, L"prof::xml::xfdf: bad nesting level (should be 0)")},
        {L"<profile>\n</xfdf>\n", L""}, {L"<profile>\n<item >\n", LoadError(3, L"prof::xml::item empty name")},
        {L"<profile>\n<item NAME=\"a\">b</item>\n", LoadError(3, L"prof::xml::item empty name")},
        {L"<profile>\n<item name=\"a>b</item>\n", LoadError(3, L"prof::xml::item no end tag")},
        {L"<profile>\n<item name=\"a\"\n", LoadError(3, L"prof::xml::item no end tag (2)")},
        {L"<profile>\n<item name=\"a\">\nb</item>\n", LoadError(3, L"prof::xml::item no '</item>' tag found")},
        {L"<profile>\n<ITEM name=\"a\">b</ITEM>\n", LoadError(3, L"prof::xml::item no '</item>' tag found")},
        {L"<profile>\n<list x>\n", LoadError(3, L"prof::xml::list: name is empty")},
        {L"<profile>\n<list name=\"a>\n", LoadError(3, L"prof::xml::list: name is unfinished")},
        // XFDF elements in a file whose first line selects the XML form
        {L"<xfdf x>\n<field name=\"a\">\n<value>b</value>\n</field>\n</xfdf>\n", L"a=b;"},
        {L"<xfdf x>\ntext\n", LoadError(3, L"prof::xml::xfdf: bad format ('<' expected)")}};
    for (const auto& [lines, result] : cases)
        EXPECT_STREQ(Loaded(XmlSource(lines)), result) << testing::PrintToString(lines);

    // The same in 8-bit text, and in a stream object, whose first line isn't the root's tag.
    EXPECT_STREQ(Loaded("\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"UTF-16\" standalone=\"yes\"?>\n<profile>\n"
                        "<list name=\"\xC3\xA4\">\n<item name=\"a\">\xE2\x82\xAC&lt;</item>\n"),
        L"[\xE4]{a=\x20AC<;}");
    EXPECT_STREQ(
        Loaded(Bytes(L"\r\n \r\n<item name=\"a\">b</item>\r\n</list>\r\nmore"), NewJob(ProfMode::Hold, L"o", 1)),
        L"a=b;");
}

TEST(ProfXfdf, EveryByteThatIsWritten)
{
    const std::string entries =
        " <field name=\"Title\">\r\n  <value> Report &lt;&amp;&gt; &quot;&apos;&#x000d;&#x000a;&#x0009;"
        "\xE2\x90\x81\xE2\x82\xAC\xF0\x9F\x98\x80</value>\r\n </field>\r\n"
        " <field name=\"1\">\r\n  <field name=\"2\">\r\n"
        "   <field name=\"a=&quot;b&quot;\">\r\n    <value></value>\r\n   </field>\r\n"
        "   <field name=\"3\">\r\n   </field>\r\n  </field>\r\n"
        "  <field name=\"&#x000d;\">\r\n   <value>line&#x000a;&#x000d;end</value>\r\n  </field>\r\n </field>\r\n";
    const JobHolder job = SampleJob();
    const std::string whole = XfdfSource(kXfdfTag) + "<fields>\r\n" + entries + "</fields>\r\n</xfdf>\r\n";
    EXPECT_EQ(Saved(job, 2), whole);
    EXPECT_STREQ(Loaded(whole), L"Title= Report <&> \"'\r\n\t\x2401\x20AC\xD83D\xDE00;1.2.a=\"b\"=;1.\r=line\n\rend;");
    EXPECT_EQ(Saved(NewJob(), 2), "");
    // The root of a stream object has no tag either; characters that XML can't represent are replaced; long values are
    // written completely.
    const JobHolder object = NewJob(ProfMode::Hold, L"object", 3);
    String value;
    for (int i = 0; i < 1023; ++i)
        value += L'x';
    value += L"\xD83D\xDE00|\xD83D|\xDE00\xFFFE\xFFFF";
    SetLeafByPath(object->Root(), L"a", value.View());
    EXPECT_EQ(Saved(object, 2), "   <field name=\"a\">\r\n    <value>" + std::string(1023, 'x') +
                                    "\xF0\x9F\x98\x80|\xEF\xBF\xBD|\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD</value>\r\n"
                                    "   </field>\r\n");
}

TEST(ProfXfdf, WhatIsReadAndWhatIsRefused)
{
    const std::string tag = std::string(kXfdfTag);
    // The lines after the head, and the result.
    const std::pair<std::string, String> cases[] = {
        {tag + "<fields>\n<field name=\"a\">\n<field "
               "name=\"b\">\n<value>c</value>\n</field>\n<value>d</value>\n</field>\n"
               "<value>e</value>\n</fields>\n</xfdf>\nrest\n",
            L"a.b=c;a=d;=e;"},
        {tag + "<FIELD name=\"\">\n<Field name=\"&quot;&#252;\">\n<VALUE> a&lt;b "
               "</value>\n</FIELD>\n</field>\n</field>\n",
            L".\"\xFC= a<b ;"},
        {tag + "<field name=\"a\">\n<value>one\n\n  two \n</value>\n</field>\n<value>x\n</value><value>y</value>\n",
            L"a=one\r\ntwo \r\n;=x\r\n;=y;"},
        {tag + "<value>a&lt\n;b</value>\n", L"=a&lt\r\n;b;"},
        // more than one tag in a line
        {tag + "<fields><field name=\"a\"><value>1</value></field><field name=\"b\"/><field name=\"c\"> "
               "<value/></field> x\n",
            L"a=1;c=;"},
        {tag + "<!-- <value>a</value> --><value>b</value>\n<ids original=\"x\"/>\n<f href=\"a.pdf\"/>\n<x", L"=b;"},
        {"", L""},
        // in any encoding: invalid UTF-8 is read in the default code page
        {tag + "<value>\xC3\xA4\xF0\x9F\x98\x80</value>\n", L"=\xE4\xD83D\xDE00;"},
        // messages
        {tag + "text\n", LoadError(3, L"prof::xml::xfdf: bad format ('<' expected)")},
        {"<value>a</value>\n", LoadError(2, L"prof::xml::value: bad format (negative level)")},
        {"<value/>\n", LoadError(2, L"prof::xml::value: bad format (negative level)")},
        {"<field name=\"a\">\n", LoadError(2, L"prof::xml::field: bad format (negative level)")},
        {"</field>\n", LoadError(2, L"prof::xml::field: bad format (negative level)")},
        {tag + "<field x>\n", LoadError(3, L"prof::xml::field: no name found")},
        {tag + "<field name=\"a>\n", LoadError(3, L"prof::xml::field: name unfinished")},
        {tag + "<field name=\"a\">\n<value>1</value>\n<value>2\n3\n",
            LoadError(6, L"prof::xml::value: bad format (missing next line)", L"a=1;")}};
    for (const auto& [lines, result] : cases)
        EXPECT_STREQ(Loaded(XfdfSource(lines)), result) << lines;
}

// Sequences that are unterminated or unknown. If each caused a search to the end of the text, this would take hours.
TEST(ProfXml, UnmasksInLinearTime)
{
    for (const String sequence : {L"&#1", L"&#0", L"&lt"})
    {
        std::string value;
        for (int i = 0; i < 200000; ++i)
            value += Bytes(sequence.View());
        const std::wstring_view end = sequence == L"&#0" ? L";</item>\n" : L"</item>\n";
        const JobHolder job = NewJob();
        Loaded(XmlSource(L"<profile>\n<item name=\"a\">") + value + Bytes(end), job);
        EXPECT_EQ(wcslen(FindLeafByPath(job->Root(), L"a")->ValueText()), 600000 + end.size() - 8);
    }
}

// Nested fields produce long names from few characters.
TEST(ProfXfdf, NamesOfNestedFieldsAreBounded)
{
    EXPECT_EQ(Loaded(NestedFields(100000, 1)).Length(), 200002u);
    const JobHolder job = NewJob();
    clsFileRO file(MemoryStream(NestedFields(100000, 1, "<value/>\n")));
    const DebugLines lines;
    EXPECT_FALSE(job->Load(file));
    EXPECT_NE(lines.Entries().front().text.View().find(L"prof::xml::field: too many fields inside each other"),
        std::wstring_view::npos);
    EXPECT_GT(job->Root().Count(), 300u);
}

// The values of the innermost field share one long name, which must not be read or stored again for each of them.
TEST(ProfXfdf, ManyValuesInDeepFieldsTakeLinearTime)
{
    constexpr int kCount = 64000;
    const auto secondsOf = [](const std::string& bytes)
    {
        const auto start = std::chrono::steady_clock::now();
        const JobHolder job = NewJob();
        clsFileRO file{MemoryStream(bytes)};
        EXPECT_TRUE(job->Load(file));
        EXPECT_EQ(job->Root().Count(), std::size_t{kCount});
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    };
    const double flat = secondsOf(NestedFields(1, kCount));
    EXPECT_LT(secondsOf(NestedFields(kCount, kCount)), 30 * flat) << "a factor, because the machine may be busy";
}

// What can't be read back must not be written.
TEST(ProfXfdf, LongAndDeepNamesComeBackOrAreRefused)
{
    const auto tree = [](int depth, std::size_t nameLength, int leaves)
    {
        JobHolder job = NewJob();
        clsItemList* list = &job->Root();
        const std::vector<wchar_t> name(nameLength, L'n');
        for (int level = 0; level <= depth; ++level)
        {
            for (int i = 0; i < (level == depth ? leaves : 1); ++i)
                list->AppendItem(job->NewLeaf(String(String::kFormatted, L"%d", i).View(), L"v"));
            clsItem& entry = job->NewList(*list, {name.data(), name.size()});
            list->AppendItem(entry);
            list = entry.List();
        }
        return job;
    };
    const std::tuple<int, std::size_t, int> kept[] = {{4, 255, 10000}, {1200, 3, 1}};
    for (const auto& [depth, nameLength, leaves] : kept)
    {
        const JobHolder job = tree(depth, nameLength, leaves), again = NewJob();
        clsFileRO file(MemoryStream(Saved(job, 2)));
        EXPECT_TRUE(again->Load(file));
        EXPECT_EQ(again->Root().Count(), static_cast<std::size_t>(depth + leaves));
    }
    const JobHolder job = tree(4000, 20, 1);
    EXPECT_EQ(job->Serialise(MemoryStream(), 2), kProfWriteFailed);
    EXPECT_EQ(job->Serialise(MemoryStream(), 1), kProfOk);
}

// Random trees without replaceable characters, with empty and repeated names, survive conversion from form to form.
TEST(ProfForms, RandomTreesComeBack)
{
    std::mt19937 random(5);
    const auto text = [&](String result, bool isName)
    {
        for (auto i = random() % 12; i > 0; --i)
        {
            constexpr std::wstring_view kSpecial = L"&<>'\" ;#x[]=/.{}\xFFFD\xD800\x2400\x2420\t\x01\x1F";
            const auto any = static_cast<wchar_t>(0x20 + random() % 0xFFDF);
            const unsigned row = any >> 8; // characters that represent others
            switch (random() % 4)
            {
            case 0:
                result += kSpecial[random() % (kSpecial.size() - (isName ? 3 : 0))];
                break;
            case 1:
                result += isName ? L"=" : L"\r\n";
                break;
            default:
                result += row == 0x23 || row == 0x24 || row == 0x30 ? L'a' : any;
            }
        }
        return result;
    };
    for (int round = 0; round < 200; ++round)
    {
        JobHolder job = NewJob();
        std::vector<clsItemList*> lists{&job->Root()};
        for (auto i = 1 + random() % 40; i > 0; --i)
        {
            clsItemList& list = random() % 2 == 0 ? *lists.back() : *lists[random() % lists.size()];
            const String name = random() % 8 == 0 ? String() : text(L"n", true);
            clsItem& item = random() % 3 == 0 ? job->NewList(list, name.View())
                                              : job->NewLeaf(name.View(), text(L"", false).View());
            list.AppendItem(item);
            if (item.List() != nullptr)
                lists.push_back(item.List());
        }
        const String tree = Tree(job->Root());
        for (const unsigned form : {0u, 1u, kProfSavePacked, kProfSavePacked | 1u})
        {
            JobHolder again = NewJob();
            EXPECT_STREQ(Loaded(Saved(job, form), again), tree) << round << ", form " << form;
            job = std::move(again);
        }
        const JobHolder object = NewJob(ProfMode::Hold, L"object", 2);
        object->CopyItems(object->Root(), job->Root());
        EXPECT_STREQ(
            Loaded(Saved(object, 0), NewJob(ProfMode::Hold, L"object", 2)), String(L"[object]{") + tree + L"}");
    }
}
