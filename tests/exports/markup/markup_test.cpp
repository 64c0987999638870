#include <qxut23/markup.h>

#include <gtest/gtest.h>

#include <windows.h>

#include <oleauto.h>

TEST(Markup, StringsGoInAndOut)
{
    BSTR text = nullptr;
    UtilMaskAllHTMLCharacters(L"a<b", &text);
    EXPECT_STREQ(text, L"a&lt;b");
    UtilDemaskAllHTMLCharacters(text, &text); // its own input is replaced
    EXPECT_STREQ(text, L"a<b");
    UtilConvertText2HTML(L"a\rb", &text, 0);
    EXPECT_STREQ(text, L"<p>a</p><p>b</p>");
    UtilConvertHtml2PlainText(text, &text, 0);
    EXPECT_STREQ(text, L"a\rb\r");
    UtilConvertText2HTML(L"a", &text, 0x80);
    EXPECT_STREQ(text, L"[_[p]_]a[_[/p]_]");
    UtilConvertHtml2PlainText(text, &text, 0x80);
    EXPECT_STREQ(text, L"a\r");

    // An empty result is a string too, and a null text is an empty one.
    SysFreeString(text);
    for (const wchar_t* empty : {L"", static_cast<const wchar_t*>(nullptr)})
    {
        text = nullptr;
        UtilMaskAllHTMLCharacters(empty, &text);
        ASSERT_NE(text, nullptr);
        EXPECT_EQ(SysStringLen(text), 0u);
        SysFreeString(text);
    }
    UtilConvertHtml2PlainText(L"nobody wants it", nullptr, 0);
}
