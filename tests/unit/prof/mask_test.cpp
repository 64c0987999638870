#include "prof/mask.h"

#include <gtest/gtest.h>

#include <string_view>
#include <utility>
#include <vector>

using namespace qx;

namespace
{

String Unmasked(const wchar_t* text)
{
    String result(text);
    const size_t length = result.Length();
    wchar_t* buffer = result.GetBuffer(length + 1);
    result.ReleaseBuffer(clsProfMask::Unmask(buffer, length));
    return result;
}

} // namespace

TEST(ProfMask, MasksWhatTheMarkupNeeds)
{
    const std::pair<const wchar_t*, const wchar_t*> cases[] = {
        {L"a<b>c&d'e\"f", L"a&lt;b&gt;c&amp;d&apos;e&quot;f"},
        {L"\r\n|\r|\n|\n\r|\r\r\n", L"&cr;|&cr;|&cr;|&cr;&cr;|&cr;&cr;"},
        {L"\t|\x01|\x0B|\x1F|\x20|\x7F", L"&tab;|&#x0001;|&#x000b;|&#x001f;|\x20|\x7F"},
        {L"&lt;", L"&amp;lt;"},
        {L"", L""},
    };
    for (const auto& [plain, masked] : cases)
    {
        const String text(plain);
        EXPECT_STREQ(clsProfMask::Mask(text), masked);
        EXPECT_EQ(clsProfMask::MaskedLength({text.Text(), text.Length()}), wcslen(masked));
    }
    const String nothing(L"nothing to mask \x2401");
    EXPECT_TRUE(clsProfMask::Mask(nothing).SharesRecordWith(nothing));
}

TEST(ProfMask, UnmasksWhatItKnows)
{
    const std::pair<const wchar_t*, const wchar_t*> cases[] = {
        {L"a&lt;b&gt;c&amp;d&apos;e&quot;f&tab;g", L"a<b>c&d'e\"f\tg"}, {L"&cr;&cr;", L"\r\n\r\n"},
        {L"&amp;lt;", L"&lt;"}, // what comes out isn't read again
        {L"&LT;&Cr;&foo;&;&", L"&LT;&Cr;&foo;&;&"}, {L"&#x41;&#65;&#xe4;&#xE4;&#x000a;", L"AA\xE4\xE4\n"},
        {L"&#x41 and the rest;b", L"Ab"}, // up to the next semicolon
        {L"&#65x;b", L"Ab"}, {L"&#x2338", L"&#x2338"},
        {L"&#xFFFF;&#x10041;&#65601;&#x123456789ABC0042;", L"\xFFFF"
                                                           L"AAB"},               // the lowest 16 bits
        {L"&#x;&#;&#0;&#x10000;&#xg;&#X41;", L"&#x;&#;&#0;&#x10000;&#xg;&#X41;"}, // no zero is made
    };
    for (const auto& [masked, plain] : cases)
        EXPECT_STREQ(Unmasked(masked), plain);
}

// Sequences that nothing ends, or that stay: a search to the end of the text for each would take hours.
TEST(ProfMask, UnmasksInLinearTime)
{
    for (const std::wstring_view sequence : {L"&#1", L"&#0", L"&lt"})
    {
        std::vector<wchar_t> text;
        for (int i = 0; i < 200000; ++i)
            text.insert(text.end(), sequence.begin(), sequence.end());
        if (sequence == L"&#0")
            text.push_back(L';');
        EXPECT_EQ(clsProfMask::Unmask(text.data(), text.size()), text.size());
    }
}
