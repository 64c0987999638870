#include <qxut23/markup.h>

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

    // An empty result is still a string, and a null text counts as empty.
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
