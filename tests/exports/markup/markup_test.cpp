#include <qxut23/markup.h>
#include <qxut23/page_text.h>

#include <gtest/gtest.h>

#include <windows.h>

#include <oleauto.h>

#include <cstdint>

TEST(Markup, StringsGoInAndOut)
{
    BSTR text = nullptr;
    UtilMaskAllHTMLCharacters(L"a<b", &text);
    EXPECT_STREQ(text, L"a&lt;b");
    UtilDemaskAllHTMLCharacters(text, &text); // the result replaces the input string
    EXPECT_STREQ(text, L"a<b");
    for (const std::uint32_t flags : {0u, 0x80u})
    {
        UtilConvertText2HTML(L"a\rb", &text, flags);
        EXPECT_STREQ(text, flags == 0 ? L"<p>a</p><p>b</p>" : L"[_[p]_]a[_[/p]_][_[p]_]b[_[/p]_]");
        UtilConvertHtml2PlainText(text, &text, flags);
        EXPECT_STREQ(text, L"a\rb\r");
    }

    SysFreeString(text);
    UtilConvertHtml2PlainText(L"nobody wants it", nullptr, 0);
}

TEST(PageText, StringsGoInAndOut)
{
    BSTR text = nullptr;
    EXPECT_EQ(QxConvertHtml2PlainText(L"<p>a &hellip;<p><a href=u>b</a>", &text, 0), QXUT_PAGE_OK);
    EXPECT_STREQ(text, L"a \u2026\n\nb");
    EXPECT_EQ(QxConvertHtml2PlainText(L"<a href=u>b</a>", &text, 2), QXUT_PAGE_BAD_FLAGS);
    EXPECT_STREQ(text, L"a \u2026\n\nb");
    EXPECT_EQ(QxConvertHtml2PlainText(L"<a href=u>b</a>", &text, QXUT_PAGE_LINKS), QXUT_PAGE_OK);
    EXPECT_STREQ(text, L"b [u]");

    EXPECT_EQ(QxMaskHtmlCharacters(L"<\U0001F600>", &text), QXUT_PAGE_OK);
    EXPECT_STREQ(text, L"&lt;&#x1f600;&gt;");
    EXPECT_EQ(QxDemaskHtmlCharacters(text, &text), QXUT_PAGE_OK); // the result replaces the input string
    EXPECT_STREQ(text, L"<\U0001F600>");

    SysFreeString(text);
    EXPECT_EQ(QxConvertHtml2PlainText(L"nobody wants it", nullptr, 0), QXUT_PAGE_OK);
}

// An empty result is still a string, and a null text counts as empty.
TEST(Markup, EmptyTexts)
{
    for (const wchar_t* const empty : {L"", static_cast<const wchar_t*>(nullptr)})
    {
        BSTR masked = nullptr, text = nullptr;
        UtilMaskAllHTMLCharacters(empty, &masked);
        EXPECT_EQ(QxConvertHtml2PlainText(empty, &text, 0), QXUT_PAGE_OK);
        EXPECT_STREQ(masked, L"");
        EXPECT_STREQ(text, L"");
        SysFreeString(masked);
        SysFreeString(text);
    }
}
