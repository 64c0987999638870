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
    UtilDemaskAllHTMLCharacters(text, &text); // its own input is replaced
    EXPECT_STREQ(text, L"a<b");
    for (const std::uint32_t flags : {0u, 0x80u})
    {
        UtilConvertText2HTML(L"a\rb", &text, flags);
        EXPECT_STREQ(text, flags == 0 ? L"<p>a</p><p>b</p>" : L"[_[p]_]a[_[/p]_][_[p]_]b[_[/p]_]");
        UtilConvertHtml2PlainText(text, &text, flags);
        EXPECT_STREQ(text, L"a\rb\r");
    }

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
