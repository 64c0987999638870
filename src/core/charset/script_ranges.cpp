#include "core/charset/script_ranges.h"

#include <windows.h>

#include <bit>
#include <cstdint>

namespace qx
{

namespace
{

enum Script : std::uint32_t
{
    kJapanese = 0x01,
    kIdeographs = 0x01 | 0x02 | 0x04, // shared by the East Asian scripts, so ideographs alone don't identify one
    kKorean = 0x08,
    kThai = 0x10,
    kGreek = 0x20,
    kCyrillic = 0x40,
    kArabic = 0x80,
    kHebrew = 0x100
};

struct scScriptRange
{
    wchar_t first;
    wchar_t last;
    std::uint32_t scripts;
};

// Sorted by the first unit, which allows the search to stop early.
constexpr scScriptRange kRanges[] = {
    {0x0370, 0x03FF, kGreek},
    {0x0400, 0x052F, kCyrillic},
    {0x0590, 0x05FF, kHebrew},
    {0x0600, 0x06FF, kArabic},
    {0x0E00, 0x0E7F, kThai},
    {0x1100, 0x11FF, kKorean},
    {0x1F00, 0x1FFF, kGreek},
    {0x3040, 0x30FF, kJapanese},
    {0x3130, 0x318F, kKorean},
    {0x3300, 0x3357, kJapanese},
    {0x3400, 0x4DFF, kKorean},
    {0x4E00, 0x9FAF, kIdeographs},
    {0xAC00, 0xD7A3, kKorean},
    {0xFE70, 0xFEFF, kArabic},
};

std::uint32_t ScriptsOfUnit(wchar_t unit)
{
    for (const scScriptRange& range : kRanges)
    {
        if (unit < range.first)
        {
            break;
        }
        if (unit <= range.last)
        {
            return range.scripts;
        }
    }
    return 0;
}

std::uint32_t CharsetOfScript(std::uint32_t script)
{
    switch (script)
    {
    case kGreek:
        return GREEK_CHARSET;
    case kCyrillic:
        return RUSSIAN_CHARSET;
    case kHebrew:
        return HEBREW_CHARSET;
    case kArabic:
        return ARABIC_CHARSET;
    case kThai:
        return THAI_CHARSET;
    case kKorean:
        return HANGUL_CHARSET;
    case kJapanese:
        return SHIFTJIS_CHARSET;
    default:
        return ANSI_CHARSET;
    }
}

std::uint32_t CharsetOfCodePage(std::uint32_t codePage)
{
    switch (codePage)
    {
    case 932:
        return SHIFTJIS_CHARSET;
    case 936:
        return GB2312_CHARSET;
    case 949:
        return HANGUL_CHARSET;
    case 950:
        return CHINESEBIG5_CHARSET;
    default:
        return ANSI_CHARSET;
    }
}

} // namespace

std::uint32_t LikelyCharset(const wchar_t* text, std::uint32_t codePage)
{
    std::uint32_t scripts = 0;
    for (; text != nullptr && *text != 0; ++text)
    {
        scripts |= ScriptsOfUnit(*text);
    }
    return std::popcount(scripts) > 1 ? CharsetOfCodePage(codePage) : CharsetOfScript(scripts);
}

} // namespace qx
