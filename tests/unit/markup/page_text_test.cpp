// The text of HTML pages, including malformed ones, compared with the text that browsers show.
#include "markup/html_escape.h"
#include "markup/page_text.h"

#include <gtest/gtest.h>

#include <string_view>
#include <utility>
#include <vector>

using namespace qx;

namespace
{

using PageCase = std::pair<const wchar_t*, const wchar_t*>;

void ExpectTexts(std::initializer_list<PageCase> cases, bool showsLinks = false)
{
    for (const auto& [html, text] : cases)
        EXPECT_STREQ(PageText(html, showsLinks), text) << testing::PrintToString(html);
}

TEST(PageText, CommentsEndWhereBrowsersEndThem)
{
    ExpectTexts({{L"a<!--x-->b<!--y-->c", L"abc"}, {L"a<!-->b<!--->c<!---->d", L"abcd"}, {L"a<!--x--!>b", L"ab"},
        {L"a<!--x->y--z>-->b", L"ab"}, {L"a<!--!>b-->c", L"ac"}, {L"a<!--!>b", L"a"}, {L"a<!-- x", L"a"},
        {L"a<!x>b<?y?>c</ >d</>e<![CDATA[f>]]>g", L"abcde]]>g"}, {L"<!DOCTYPE html>a", L"a"}, {L"a<!", L"a"},
        {L"a<!--", L"a"}});
}

TEST(PageText, Tags)
{
    ExpectTexts({{L"a < b > c <3 <", L"a < b > c <3 <"}, {L"a</", L"a</"}, {L"<b>a</b\n>b</ b>c", L"abc"},
        {L"<b title='>' x=\">\" y=a>b>a", L"b>a"}, {L"<b x='>a", L""}, {L"a<b", L"a"}, {L"<b \"x>\">a", L"\">a"},
        {L"<b ='x>'>a", L"'>a"}, {L"<b x=>a", L"a"}, {L"<b x = 'y'z>a", L"a"}, {L"x<br/>y<BR />z</br>u", L"x\ny\nz\nu"},
        {L"<pages>a</pages>", L"a"}, {L"<p\u00E4>a<p_>b", L"ab"}});
}

TEST(PageText, RawContentEndsWithItsOwnTag)
{
    ExpectTexts({{L"<script>a<b>'</scripts>'</script>c", L"c"}, {L"</script></style>a", L"a"},
        {L"<script>a<!--b<script>c</script>d--></script>e", L"e"}, {L"<script><!--a</script>b", L"b"},
        {L"<script><!--<script></script>a", L""}, {L"<script><!--><script></script>a", L"a"},
        {L"<STYLE>p</Style x='>'>a", L"a"}, {L"<style><!-- </style>a --> b", L"a --> b"}, {L"<style>a", L""},
        {L"<title>a &amp; <b>b</title>c", L"a & <b>b\n\nc"}, {L"a<title>b</title>", L"a"},
        {L"<textarea>\na\n &lt;b></textarea>c", L"a\n <b>\nc"}, {L"<xmp><b>&amp;</xmp>c", L"<b>&amp;\nc"},
        {L"<iframe><p>a</iframe>b<noframes>c</noframes>", L"b"}, {L"<noscript>a</noscript>", L"a"},
        {L"a<template>b<template>c</template>d</template>e</template>f", L"aef"},
        {L"a<plaintext>b</plaintext>&amp;", L"a\nb</plaintext>&amp;"}, {L"<script></script", L""}});
}

TEST(PageText, CharacterReferences)
{
    ExpectTexts({{L"&lt;b&gt; &AMP; &amp;amp; &auml;&Auml;", L"<b> & &amp; \u00E4\u00C4"},
        {L"&notit; &notin; &not &ampx &am; &", L"\u00ACit; \u2209 \u00AC &x &am; &"},
        {L"&euro;&euro &CounterClockwiseContourIntegral;", L"\u20AC&euro \u2233"},
        {L"&#228;&#xE4;&#Xe4 &#x1F600;&#128512x", L"\u00E4\u00E4\u00E4 \U0001F600\U0001F600x"},
        {L"&#128;&#x9f;&#0;&#xD800;&#x110000;&#99999999999999999999;", L"\u20AC\u0178\uFFFD\uFFFD\uFFFD\uFFFD"},
        {L"&#; &#x; &#xg; &#-1;", L"&#; &#x; &#xg; &#-1;"}, {L"&NotEqualTilde;&Afr;", L"\u2242\u0338\U0001D504"},
        {L"a&#32;&#10; b&nbsp;&nbsp; c", L"a b\u00A0\u00A0 c"}, {L"\U0001F600 \xD83D x", L"\U0001F600 \xD83D x"}});
    ExpectTexts({{L"<a href='?a=1&copy=2&amp;lt;&lt'>x</a>", L"x [?a=1&copy=2&lt;<]"}}, true);
}

TEST(PageText, BlocksAndWhiteSpace)
{
    ExpectTexts({{L" a \r\n\t b <b> c</b> ", L"a b c"}, {L"<p>a</p><p>b</p>", L"a\n\nb"},
        {L"<div>a</div><div><div>b</div></div>c", L"a\nb\nc"}, {L"<h1>a</h1>b<hr>c", L"a\n\nb\n\nc"},
        {L"a <br> b<br><br>c<br></div>d", L"a\nb\n\nc\nd"}, {L"<br><p> <p>a<p></p>", L"a"},
        {L"<pre>\n\n a\t b \r\n  c &lt;\n</pre>d", L" a\t b \n  c <\n\nd"}, {L"a<pre> b</pre>", L"a\n\n b"},
        {L"</pre>a  b", L"a b"}, {L"<q>a</q>, <img alt='b &amp;c'>d<img>e", L"\"a\", b &c de"},
        {L"<input value=a><input type=hidden value=b><input type=SUBMIT value=c>", L"a c"},
        {L"<blockquote>a<br>b</blockquote>c", L"    a\n    b\n\nc"}, {L"", L""}, {L" \n<p> ", L""}});
}

TEST(PageText, Lists)
{
    ExpectTexts({{L"a<ul><li>b<li>c</li></ul>d", L"a\n\n- b\n- c\n\nd"},
        {L"<ul><li>a<ul><li>b<br>c</ul><li><p>d</p><p>e</p></ul>", L"- a\n  - b\n    c\n- d\n\n  e"},
        {L"<ol start=9><li>a<li>b<li value=2>c<li value=x>d</ol>", L"9. a\n10. b\n2. c\n3. d"},
        {L"<ol type=a start=26><li>a<li>b</ol><ol type=I start=3999><li>c<li>d</ol><ol type=A start=-1><li>e</ol>",
            L"z. a\naa. b\n\nMMMCMXCIX. c\n4000. d\n\n-1. e"},
        {L"<ol type=i start=8><li>a<li>b</ol>", L"viii. a\nix. b"},
        {L"<ol start=2147483647><li>a<li>b</ol>", L"2147483647. a\n2147483647. b"},
        {L"<ol start=-99999999999><li>a</ol>", L"-2147483647. a"}, {L"<li>a</li></ul>b", L"- a\n\nb"},
        {L"<ul><li></li><li>a<li><ul><li>b</ul></ul>", L"-\n- a\n-\n  - b"},
        {L"<ol><li>a</ul>b<li>c</ol></ol>d", L"1. a\n   b\n2. c\n\nd"},
        {L"<dl><dt>a<dd>b<ul><li>c</ul><dt>d<dd>e</dl>f", L"a\n    b\n    - c\nd\n    e\n\nf"}});
}

TEST(PageText, Tables)
{
    ExpectTexts({{L"<table><tr><th>a<th>b<tr><td>c<td>d</table>e", L"a\tb\nc\td\ne"},
        {L"x<table>\n<tr>\n<td> <p>a</p> </td>\n<td><p>b</p><p>c</p></td>\n<td>d</td></tr>\n</table>y",
            L"x\na\tb\n\nc\td\ny"},
        {L"<table><tr><td></td><td>a</td><td></td></tr><tr><td>b</td><td></td><td>c</td></tr></table>", L"\ta\nb\t\tc"},
        {L"<table><tr><td>a<td><table><tr><td>b<td>c<tr><td>d</table><td>e<tr><td>f</table>", L"a\tb\tc\nd\te\nf"},
        {L"<table><tr><td><ul><li>a<td>b<tr><td>c</table>", L"- a\tb\nc"},
        {L"<table><tr><td><pre>a  b<td>c  d</table>", L"a  b\tc d"}, {L"</table></tr>a<td>b", L"ab"},
        {L"<table><caption>a</caption><tbody><tr><td>b</table>", L"a\nb"}});
}

TEST(PageText, Links)
{
    ExpectTexts(
        {{L"<a href=u>text</a>.", L"text [u]."}, {L"<a href=\" U\n \">u</a>", L"u"},
            {L"<a href='#x'>a</a><a name=y>b</a><a href='JavaScript:c()'>c</a>", L"abc"},
            {L"<a href=u>a <p></a>b", L"a [u]\n\nb"}, {L"<a href=u>a <a href=v>b", L"a [u] b [v]"},
            {L"<a href=u></a>a<abbr>b</abbr>", L"ab"}, {L"<table><tr><td><a href=u>a<td>b</table>", L"a [u]\tb"}},
        true);
    EXPECT_STREQ(PageText(L"<a href=u>text</a>", false), L"text");
}

// The parser doesn't recurse, and the length of the text stays proportional to the page, however deeply it is nested.
TEST(PageText, DeepAndLongPages)
{
    for (const wchar_t* const piece :
        {L"<ul><li>", L"<table><tr><td>", L"<blockquote>", L"<template>", L"<!", L"</a><a x=", L"<pre>\n",
            L"<ol><li>x<br>y", L"<script>", L"<!--<script>", L"&", L"&#9", L"<", L"</", L"<table><td><ul><li>x"})
    {
        constexpr std::size_t kCount = 20'000;
        const std::wstring_view view(piece);
        std::vector<wchar_t> page;
        for (std::size_t i = 0; i < kCount; ++i)
            page.insert(page.end(), view.begin(), view.end());
        EXPECT_LE(PageText({page.data(), page.size()}, true).Length(), 10 * page.size())
            << testing::PrintToString(piece);
    }
}

TEST(HtmlEscape, WholeCharacters)
{
    constexpr PageCase kCases[] = {{L"<a b=\"c\">'&'\t", L"&lt;a b=&quot;c&quot;&gt;'&amp;'&#09;"},
        {L"\u00E4\u20AC\U0001F600\U0010FFFF", L"&auml;&#x20ac;&#x1f600;&#x10ffff;"},
        {L"\x80\x9F\xD83D!\xDE00", L"\x80\x9F\xD83D!\xDE00"}, {L"", L""}};
    for (const auto& [text, masked] : kCases)
    {
        EXPECT_STREQ(EscapeHtml(text), masked);
        EXPECT_STREQ(UnescapeHtml(masked), text);
    }
    EXPECT_STREQ(UnescapeHtml(L"&& &lt;&lt;x&hellip;&nosuch;&ltx &#x20ac"), L"&& <<x\u2026&nosuch;<x \u20AC");
}

} // namespace
