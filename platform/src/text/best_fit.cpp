#include "text/best_fit.h"

#include <unicode/uchar.h>
#include <unicode/unorm2.h>

#include <algorithm>
#include <cstdint>
#include <span>

namespace qxplatform
{

namespace
{

struct Approximation
{
    wchar_t unit;
    wchar_t similar;
    wchar_t lessSimilar = 0; // used if the page lacks the first character as well
};

// Letters without a decomposition, quotation marks, dashes and blanks that the standards' pages and the Cyrillic and
// Greek pages replace. Sorted by unit.
constexpr Approximation kCommon[] = {
    {0x00a1, L'!'},
    {0x00a2, L'c'},
    {0x00a4, L'$', 0x20aa},
    {0x00a5, L'Y'},
    {0x00a6, L'|', 0x2502},
    {0x00a9, L'C', L'c'},
    {0x00ab, L'<'},
    {0x00ad, L'-'},
    {0x00ae, L'R', L'r'},
    {0x00b7, L'.'},
    {0x00bb, L'>'},
    {0x00c6, L'A'},
    {0x00d0, L'D'},
    {0x00d8, L'O'},
    {0x00e6, L'a'},
    {0x00e8, L'e', L'c'},
    {0x00f8, L'o'},
    {0x0110, 0x00d0, L'D'},
    {0x0111, L'd'},
    {0x0126, L'H'},
    {0x0127, L'h'},
    {0x0131, L'i'},
    {0x0141, L'L'},
    {0x0142, L'l'},
    {0x0152, L'O'},
    {0x0153, L'o'},
    {0x0166, L'T'},
    {0x0167, L't'},
    {0x0168, L'U', L'T'},
    {0x0169, L'u', L't'},
    {0x0180, L'b'},
    {0x0189, 0x0110, L'D'},
    {0x0191, 0x0192, L'F'},
    {0x0192, L'f'},
    {0x0197, L'I'},
    {0x019a, L'l'},
    {0x019f, L'O'},
    {0x01ab, L't'},
    {0x01ae, L'T'},
    {0x01b6, L'z', L'Z'},
    {0x01e4, L'G'},
    {0x01e5, L'g'},
    {0x0261, L'g'},
    {0x02b9, L'\'', 0x00b4},
    {0x02ba, L'"'},
    {0x02bc, L'\''},
    {0x02c4, L'^'},
    {0x02c6, L'^'},
    {0x02c8, L'\''},
    {0x02cb, L'`', L'\''},
    {0x02cd, L'_'},
    {0x02dc, L'~'},
    {0x0300, L'`', L'\''},
    {0x0302, L'^'},
    {0x0303, L'~', 0x02dc},
    {0x030e, L'"', 0x00a8},
    {0x0331, L'_'},
    {0x0332, L'_'},
    {0x2000, L' '},
    {0x2001, L' '},
    {0x2002, L' '},
    {0x2003, L' '},
    {0x2004, L' '},
    {0x2005, L' '},
    {0x2006, L' '},
    {0x2010, L'-'},
    {0x2011, L'-'},
    {0x2013, L'-'},
    {0x2014, L'-'},
    {0x2018, L'\'', L'`'},
    {0x2019, L'\''},
    {0x201a, L',', L'\''},
    {0x201c, L'"'},
    {0x201d, L'"'},
    {0x201e, L'"', L','},
    {0x2022, L'.'},
    {0x2026, L'.', L':'},
    {0x2032, L'\'', 0x00b4},
    {0x2035, L'`', 0x00b4},
    {0x2039, L'<'},
    {0x203a, L'>'},
    {0x2122, L'T', L't'},
};

// Further characters replaced by the system's Latin pages and the old console pages. Sorted by unit.
constexpr Approximation kLatin[] = {
    {0x00a3, L'L'},
    {0x00a8, L'"'},
    {0x00ac, 0x2510},
    {0x00af, 0x2014, L'_'},
    {0x00b1, L'+'},
    {0x00b4, L'/', L'\''},
    {0x00b5, 0x0447, L'u'},
    {0x00b8, L','},
    {0x00bc, L'1'},
    {0x00bd, L'1'},
    {0x00be, L'3', L'_'},
    {0x00d7, L'x'},
    {0x00de, L'_'},
    {0x00f0, L'd'},
    {0x00fe, L'_'},

    {0x01a9, 0x03a3, L'S'},
    {0x01c0, L'|', 0x2502},
    {0x01c3, L'!'},
    {0x0278, 0x03c6, 0x00f8},
    {0x02bb, 0x2018, L'\''},
    {0x02c7, L'^'},
    {0x02c9, 0x2500, 0x00af},
    {0x02ca, 0x00b4, L'\''},
    {0x02d8, L'^'},
    {0x02d9, L'\''},
    {0x02da, 0x00b0},
    {0x02db, 0x00b8},
    {0x02dd, 0x00a8},
    {0x0301, 0x00b4, L'\''},
    {0x0304, 0x00af, 0x2500},
    {0x0305, 0x00af, 0x017b},
    {0x0306, 0x02d8, 0x02c6},
    {0x0307, 0x02d9, 0x00b7},
    {0x0308, 0x00a8, L'"'},
    {0x030a, 0x00b0, 0x00a7},
    {0x030c, 0x02c7, 0x02c6},
    {0x030d, 0x0384},
    {0x0327, 0x00b8, L','},
    {0x037e, L';'},
    {0x0391, 0x03b1},
    {0x0393, L'G'},
    {0x0394, 0x03b4},
    {0x0395, 0x03b5},
    {0x0398, L'T', 0x00d8},
    {0x03a0, 0x03c0},
    {0x03a3, L'S'},
    {0x03a4, 0x03c4},
    {0x03a6, L'F'},
    {0x03a9, L'O'},
    {0x03b1, L'a'},
    {0x03b2, 0x00df},
    {0x03b4, L'd'},
    {0x03b5, L'e'},
    {0x03bc, 0x00b5, L'u'},
    {0x03c0, L'p'},
    {0x03c3, L's'},
    {0x03c4, L't'},
    {0x03c6, L'f'},
    {0x04bb, L'h'},
    {0x0589, L':'},

    {0x066a, L'%'},
    {0x06cc, 0x064a},
    {0x2017, L'=', L'_'},
    {0x2020, 0x253c, L'+'},
    {0x2021, 0x256a, 0x256c},
    {0x2024, 0x2022, 0x00b7},
    {0x2030, L'%'},
    {0x2033, 0x201d, 0x00a8},
    {0x203c, L'!'},
    {0x2044, L'/'},
    {0x2070, 0x00b0, L'0'},
    {0x2078, L'8', L'9'},
    {0x2080, L'0', 0x00b0},
    {0x2081, L'1', L'0'},
    {0x2082, L'2', 0x00b2},
    {0x2083, L'3', 0x00b3},
    {0x20a1, 0x00a2},
    {0x20a4, 0x00a3, 0x0141},
    {0x20a7, L'P'},

    {0x2107, L'E'},
    {0x2118, L'P'},
    {0x2126, 0x03a9, L'O'},
    {0x212b, 0x00c5, 0x0139},
    {0x212e, L'e'},
    {0x2190, 0x2039},
    {0x2191, L'^'},
    {0x2192, 0x203a},
    {0x2193, L'v'},
    {0x2194, L'-'},
    {0x2195, L'|'},
    {0x21a8, L'|'},
    {0x2205, 0x00d8, 0x0158},
    {0x2211, 0x03a3, L'S'},
    {0x2212, L'-'},
    {0x2213, 0x00b1, L'-'},
    {0x2215, L'/'},
    {0x2216, L'\\', L'/'},
    {0x2217, L'*'},
    {0x2218, 0x00b0},
    {0x2219, 0x2022},
    {0x221a, L'v', L'V'},
    {0x221e, L'8'},
    {0x221f, L'L'},
    {0x2223, L'|', 0x2502},
    {0x2229, L'n'},
    {0x2236, L':'},
    {0x223c, L'~'},
    {0x2248, 0x02dc, L'~'},
    {0x2261, L'='},
    {0x2264, L'='},
    {0x2265, L'='},
    {0x226a, 0x00ab},
    {0x226b, 0x00bb},
    {0x22c5, 0x00b7},
    {0x2302, 0x00a6},
    {0x2303, L'^'},
    {0x2310, 0x00ac},
    {0x2320, L'('},
    {0x2321, L')'},
    {0x2329, L'<'},
    {0x232a, L'>'},
    {0x2500, L'-', 0x00a6},
    {0x2502, 0x00a6, L'-'},
    {0x250c, L'-', L'+'},
    {0x2510, 0x00ac, L'+'},
    {0x2514, L'L', L'+'},
    {0x2518, L'-', L'+'},
    {0x251c, L'+'},
    {0x2524, L'+', 0x00a6},
    {0x252c, L'T', L'-'},
    {0x2534, L'+', L'-'},
    {0x253c, L'+'},
    {0x2550, L'=', L'-'},
    {0x2551, 0x00a6, 0x0e1a},
    {0x2552, L'-', L'+'},
    {0x2553, 0x0433, L'+'},
    {0x2554, L'-', 0x0433},
    {0x2555, 0x00ac, L'+'},
    {0x2556, 0x00ac, L'+'},
    {0x2557, 0x00ac, L'+'},
    {0x2558, L'L', L'+'},
    {0x2559, L'L', L'+'},
    {0x255a, L'L', L'+'},
    {0x255b, L'-', L'+'},
    {0x255c, L'-', L'+'},
    {0x255d, L'-', L'+'},
    {0x255e, 0x00a6, 0x2560},
    {0x255f, 0x00a6, 0x2560},
    {0x2560, 0x00a6},
    {0x2561, 0x00a6, 0x2563},
    {0x2562, 0x00a6, 0x2563},
    {0x2563, 0x00a6},
    {0x2564, L'T', L'-'},
    {0x2565, L'T', L'-'},
    {0x2566, L'T', L'-'},
    {0x2567, 0x00a6, L'-'},
    {0x2568, 0x00a6, L'-'},
    {0x2569, 0x00a6, L'-'},
    {0x256a, L'+', 0x256c},
    {0x256b, L'+', 0x256c},
    {0x256c, L'+'},
    {0x2580, L'-', 0x00af},
    {0x2584, L'-', L'_'},
    {0x2588, L'-', 0x00a6},
    {0x258c, 0x00a6, 0x2588},
    {0x2590, 0x00a6, 0x2588},
    {0x2591, L'-', 0x00a6},
    {0x2592, L'-', 0x00a6},
    {0x2593, L'-', 0x00a6},
    {0x25a0, 0x00a6},
    {0x25ac, L'-'},
    {0x25b2, L'^'},
    {0x25ba, L'>'},
    {0x25bc, 0x02c7},
    {0x25c4, L'<'},
    {0x25cb, L'0'},
    {0x25d8, 0x2022},
    {0x25d9, L'0'},
    {0x263a, L'O'},
    {0x263b, L'O'},
    {0x263c, L'0'},
    {0x2640, L'+'},
    {0x2642, L'>'},
    {0x2660, 0x00a6},
    {0x2663, 0x00a6},
    {0x2665, 0x00a6},
    {0x2666, 0x00a6},
    {0x266a, L'd'},
    {0x266b, L'd'},

    {0x2758, L'|', 0x2502},
    {0x275b, 0x2018, L'\''},
    {0x275c, 0x2019, L'\''},
    {0x275d, 0x201c, L'"'},
    {0x275e, 0x201d, L'"'},
    {0x3000, L' '},

    {0x3008, L'<'},
    {0x3009, L'>'},
    {0x300a, 0x00ab},
    {0x300b, 0x00bb},
    {0x301a, L'['},
    {0x301b, L']', L'='},
    {0x301d, L'"', 0x201c},
    {0x301e, L'"', 0x201d},
    {0x301f, 0x201e, L'"'},
    {0x30fb, 0x00b7},
    {0x30fc, 0x2014, L'_'},
    {0xfe70, 0x064b},
    {0xfe71, 0x064b},
    {0xfe72, 0x064c},
    {0xfe74, 0x064d},
    {0xfe76, 0x064e},
    {0xfe77, 0x064e},
    {0xfe78, 0x064f},
    {0xfe79, 0x064f},
    {0xfe7a, 0x0650},
    {0xfe7b, 0x0650},
    {0xfe7c, 0x0651},
    {0xfe7d, 0x0651},
    {0xfe7e, 0x0652},
    {0xfe7f, 0x0652},
    {0xfe81, 0x0622},
    {0xfe82, 0x0622},
    {0xfe83, 0x0623},
    {0xfe84, 0x0623},
    {0xfe85, 0x0624},
    {0xfe86, 0x0624},
    {0xfe87, 0x0625},
    {0xfe88, 0x0625},
    {0xfe89, 0x0626},
    {0xfe8a, 0x0626},
    {0xfe8b, 0x0626},
    {0xfe8c, 0x0626},
};

struct Range
{
    wchar_t first;
    wchar_t last;
};

// Characters that fall back to the base of their decomposition: accented Latin letters and full-width forms in all
// pages, superscript and subscript digits and letterlike symbols in the Latin ones.
constexpr Range kCommonBases[] = {{0x00aa, 0x017e}, {0x01a0, 0x01b0}, {0x01cd, 0x01dc}, {0x01de, 0x01df},
    {0x01e6, 0x01f0}, {0xfb50, 0xfbaf}, {0xfe80, 0xfefc}, {0xff01, 0xff1e}, {0xff20, 0xff5e}};
constexpr Range kLatinBases[] = {{0x2070, 0x2070}, {0x2074, 0x2078}, {0x207f, 0x2089}, {0x2102, 0x2134}};

// Returns the single character that remains of a compatibility decomposition without its marks, or 0 if there isn't
// exactly one.
wchar_t BaseOf(wchar_t unit)
{
    UErrorCode status = U_ZERO_ERROR;
    const UNormalizer2* const decomposition = unorm2_getNFKDInstance(&status);
    UChar parts[20];
    const std::int32_t count = unorm2_getDecomposition(decomposition, unit, parts, std::size(parts), &status);
    if (U_FAILURE(status) || count < 1)
        return 0;
    const auto last = std::remove_if(parts, parts + count, [](UChar part) { return u_getCombiningClass(part) != 0; });
    return last - parts == 1 ? static_cast<wchar_t>(parts[0]) : wchar_t{0};
}

void AddRows(std::span<const Approximation> rows, std::vector<Similar>& similar)
{
    for (const Approximation& row : rows)
    {
        similar.push_back({row.unit, row.similar});
        if (row.lessSimilar != 0)
            similar.push_back({row.unit, row.lessSimilar});
    }
}

void AddBases(std::span<const Range> ranges, std::vector<Similar>& similar)
{
    for (const Range& range : ranges)
        for (wchar_t unit = range.first; unit <= range.last; ++unit)
            if (const wchar_t base = BaseOf(unit); base != 0)
                similar.push_back({unit, base});
}

} // namespace

std::vector<Similar> SimilarCharacters(BestFit bestFit)
{
    std::vector<Similar> similar;
    if (bestFit == BestFit::AsConverter)
        return similar;
    AddRows(kCommon, similar);
    AddBases(kCommonBases, similar);
    if (bestFit == BestFit::LatinOne)
        std::erase_if(similar, [](const Similar& row) { return row.unit > 0xff; });
    if (bestFit == BestFit::Latin)
    {
        AddRows(kLatin, similar);
        AddBases(kLatinBases, similar);
    }
    return similar;
}

} // namespace qxplatform
