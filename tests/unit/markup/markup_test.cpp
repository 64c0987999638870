#include "core/pattern/regex.h"
#include "markup/entities.h"
#include "markup/html_mask.h"
#include "markup/html_to_text.h"
#include "markup/text_to_html.h"

#include <gtest/gtest.h>

#include <chrono>
#include <random>
#include <utility>

using namespace qx;

namespace
{

using Case = std::pair<const wchar_t*, const wchar_t*>;

String Anchors(String html)
{
    const std::size_t length = html.Length();
    html.ReleaseBuffer(ExpandAnchors(html.GetBuffer(length + 1), length));
    return html;
}

// Expands links with the pattern itself, for comparison.
String AnchorsByPattern(const String& html)
{
    clsRegEx findStart(L"<a", 0x8);
    clsRegEx findAnchor(LR"re(^(.*)<a\s+(.*)href="(.*)"(.*)>(.*)</a>(.*)$)re", 0x40028);
    String result, rest = html;
    clsRegExMatchList groups;
    while (findStart.Match(rest, nullptr) && findAnchor.Match(rest, &groups))
    {
        result += groups[1].text;
        if (IString(groups[5].text) == groups[3].text)
            result += groups[3].text;
        else
            result += groups[5].text + L" [" + groups[3].text + L"]";
        rest = groups[6].text;
    }
    return result + rest;
}

} // namespace

TEST(HtmlMask, BothWays)
{
    const Case cases[] = {{L"", L""}, {L"a<b", L"a&lt;b"}, {L"\t", L"&#09;"}, {L"\"&'>", L"&quot;&amp;'&gt;"},
        {L"\u20AC\x80\x81\x9F", L"&#x20ac;&euro;&#x0081;&#x009f;"}, {L"\u00A0\u00E4\u00FF", L"&nbsp;&auml;&yuml;"},
        {L"\xD83D\xDE00", L"&#xd83d;&#xde00;"}, {L"\x7F\n\r plain", L"\x7F\n\r plain"}};
    for (const auto& [in, out] : cases)
    {
        EXPECT_STREQ(MaskHtml(in).Text(), out);
        EXPECT_STREQ(DemaskHtml(out).Text(), in);
    }

    String all;
    for (int c = 1; c <= 0xFFFF; ++c)
        all += static_cast<wchar_t>(c);
    EXPECT_TRUE(DemaskHtml(MaskHtml(all.Text()).Text()) == all);
    for (const HtmlEntity& entity : kHtmlEntities)
        EXPECT_EQ(FindHtmlEntity(entity.text)->code, entity.code);
}

TEST(HtmlMask, DemaskOfWhatIsNoReference)
{
    const Case cases[] = {{L"AT&T", L"AT&T"}, {L"x & y; z", L"x & y; z"}, {L"&AUML;", L"&AUML;"}, {L"&#0;", L"#0;"},
        {L"&#xZZ;", L"#xZZ;"}, {L"&#;&#x;", L"#;#x;"}, {L"&#X41;", L"#X41;"}, {L"&apos;", L"'"},
        {L"&#65;&#x41;&#x0041;", L"AAA"}, {L"&thetasym;", L"&thetasym;"}, {L"&123456;", L"&123456;"},
        {L"&1234567;&lt;", L"&1234567;<"}, {L"&", L"&"}, {L"&;&&lt;;", L"&;&&lt;;"}, {L"&#65", L"&#65"},
        {L"&#65536;&#65601;", L"#65536;A"}, {L"&&amp;amp;", L"&&amp;amp;"}};
    for (const auto& [in, out] : cases)
        EXPECT_STREQ(DemaskHtml(in).Text(), out) << ::testing::PrintToString(in);
}

TEST(TextToHtml, ParagraphsInBothForms)
{
    const Case html[] = {{L"a\r\nb", L"<p>a</p><p>b</p>"}, {L"a\r\n\r\nb", L"<p>a</p><p><br></p><p>b</p>"},
        {L"a\rb\nc", L"<p>a</p><p>b\nc</p>"}, {L"", L"<p><br></p>"}, {L"a<b", L"<p>a&lt;b</p>"},
        {L"\u00ABq\u00BB", L"<p>&laquo;&laquo;q&raquo;&raquo;</p>"}, {L"<p></p>", L"<p>&lt;p&gt;&lt;/p&gt;</p>"}};
    for (const auto& [in, out] : html)
        EXPECT_STREQ(TextToHtml(in, false).Text(), out);
    const Case placeholders[] = {{L"a\r\nb", L"[_[p]_]a[_[/p]_][_[p]_]b[_[/p]_]"}, {L"", L"[_[p]_][_[/p]_]"},
        {L"a\r\r", L"[_[p]_]a[_[/p]_][_[p]_][_[/p]_][_[p]_][_[/p]_]"}};
    for (const auto& [in, out] : placeholders)
        EXPECT_STREQ(TextToHtml(in, true).Text(), out);
}

TEST(HtmlToText, Cases)
{
    const Case cases[] = {{L"", L""}, {L"<p>a</p><p>b</p>", L"a\rb\r"}, {L"<P CLASS=x>A</P>", L"A\r"},
        {L"<h1>a</h1><H6>b</H6>", L"a\rb\r"}, {L"<ul><li>a</li><li>b</li></ul>", L"- a\r- b\r\r"},
        {L"<tr><td>a</td><td>b</td></tr>", L"a b \r"}, {L"x<br>y<br/>z<br />!<hr>", L"x\ryz\r!\r"},
        {L"<script>x</script>y", L"y"}, {L"<SCRIPT>a<script>b</script><p>c</p></Script>d", L"d"},
        {L"</style>text<style>back", L"back"}, {L"&lt;b&gt; &amp;lt;", L"<b> &lt;"}, {L"a   b\t\r\nc", L"a b c"},
        {L"a&nbsp;&nbsp;b", L"a\u00A0b"}, {L"a \u00A0b\u00A0 c", L"a b\u00A0c"}, {L"a<!--x-->b<!--y-->c", L"ac"},
        {L"a<!-->b", L"ab"}, {L"a<!--->b-->c<!-- d", L"ac"}, {L"a < b > c", L"a c"}, {L"a <b", L"a "},
        {L"x<p <i>y</p>", L"xy\r"}, {L"x<p class=<td>y</td>z", L"xy z"}, {L"<a href=\"u\">text</a>", L"text [u]"},
        {L"<A class=c HREF=\"u\" id=i>U</A>!", L"u!"}, {L"<a href='u'>text</a>", L"text"},
        {L"\u00ABa \u00ABb\u00BB c\u00BB \u00AB \u00BB", L"a \u00ABb\u00BB c  "}, {L"\u00BB\u00ABx", L"\u00BB\u00ABx"},
        {L"x \u00BB y", L"x \u00BBy"}, // an inner guillemet doesn't end a run of blanks
        {L"a<br><br><br><br><br>b", L"a\r\rb"}, {L"a<br><br><br>b<br><br>c", L"a\r\rb\r\rc"}};
    for (const auto& [in, out] : cases)
        EXPECT_STREQ(HtmlToText(in, false).Text(), out) << ::testing::PrintToString(in);
    const Case placeholders[] = {{L"[_[p]_]a[_[/p]_]", L"a\r"}, {L"[p]a[/p]<b>", L"a\r<b>"}, {L"a[b", L"a"},
        {L"[_[p]", L""}, {L"a[_", L"a"}, {L"[p]_]b[/p]_c", L"b\r_c"}};
    for (const auto& [in, out] : placeholders)
        EXPECT_STREQ(HtmlToText(in, true).Text(), out) << ::testing::PrintToString(in);
}

// The hand-written scan must find what the pattern finds, on random markup composed of the relevant pieces.
TEST(ExpandAnchors, AgreesWithThePattern)
{
    const wchar_t* pieces[] = {L"<a ", L"<A\n", L"<a", L"href=\"", L"HREF=\"", L"\"", L">", L"</a>", L"</A>", L"u",
        L"U", L" ", L"\n", L"<abbr>", L"href='"};
    std::mt19937 random(6);
    for (int i = 0; i < 20000; ++i)
    {
        String html;
        for (auto count = random() % 24; count != 0; --count)
            html += pieces[random() % std::size(pieces)];
        ASSERT_STREQ(Anchors(html).Text(), AnchorsByPattern(html).Text()) << ::testing::PrintToString(html.Text());
    }
}

// Texts that would make a naive parser rescan repeatedly. With quadratic time this would take minutes.
TEST(HtmlToText, HostileTextTakesLinearTime)
{
    const auto begin = std::chrono::steady_clock::now();
    for (const wchar_t* unit : {L"<", L"<a ", L"<a href=\"x\">", L"<a href=\"x\">y</a>", L"<!--", L"-->", L"&", L"&#x;",
             L"<p", L"<script>", L"\r", L"\u00AB", L"["})
    {
        String text;
        text.Reserve(wcslen(unit) * 200'000 + 1);
        for (int i = 0; i < 200'000; ++i)
            text += unit;
        for (const bool placeholders : {false, true})
            EXPECT_LE(HtmlToText(text.Text(), placeholders).Length(), text.Length());
        DemaskHtml(text.Text());
    }
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(30));
}
