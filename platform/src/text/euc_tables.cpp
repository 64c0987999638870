#include "text/euc_tables.h"

namespace qxplatform
{

namespace
{

constexpr unsigned FIRST = 0xa1;
constexpr unsigned LAST = 0xfe;
constexpr unsigned SINGLE_SHIFT_2 = 0x8e;
constexpr unsigned FIRST_KATAKANA = 0xa1;
constexpr unsigned LAST_KATAKANA = 0xdf;

PageTables StartTables(const PageTables& base)
{
    PageTables tables;
    tables.undefinedCharacter = base.undefinedCharacter;
    tables.pairs.assign(0x8000, PageTables::UNDEFINED);
    tables.exact.assign(PageTables::UNITS, 0);
    for (unsigned byte = 0; byte < 256; ++byte)
    {
        tables.lead[byte] = byte >= FIRST && byte <= LAST;
        tables.single[byte] = byte < 0x80 ? static_cast<wchar_t>(byte) : base.undefinedCharacter;
        tables.strict[byte] = byte >= 0x80;
        if (byte < 0x80)
            tables.exact[byte] = static_cast<std::uint16_t>(byte);
    }
    return tables;
}

void SetPair(PageTables& tables, unsigned code, wchar_t unit)
{
    if (unit == PageTables::UNDEFINED)
        return;
    tables.pairs[code - 0x8000] = unit;
    if (tables.exact[unit] == 0)
        tables.exact[unit] = static_cast<std::uint16_t>(code);
}

// Converts row and column of the JIS plane, both from 0, to a code of page 932.
unsigned ShiftJis(unsigned row, unsigned column)
{
    const unsigned lead = row / 2 + (row < 62 ? 0x81 : 0xc1);
    const unsigned trail = row % 2 != 0 ? column + 0x9f : column + (column < 63 ? 0x40 : 0x41);
    return lead << 8 | trail;
}

// Keeps the best fits of the base page that are in the plane.
void FitLikeBase(const PageTables& base, PageTables& tables)
{
    tables.fitted = tables.exact;
    for (std::size_t unit = 0x80; unit < PageTables::UNITS; ++unit)
    {
        const std::uint16_t code = base.fitted[unit];
        if (tables.fitted[unit] != 0 || code == 0)
            continue;
        const wchar_t fit = code > 0xff ? base.pairs[code - 0x8000] : base.single[code];
        if (fit != PageTables::UNDEFINED)
            tables.fitted[unit] = tables.exact[fit];
    }
}

} // namespace

PageTables MakeJapaneseEucTables(const PageTables& page932)
{
    PageTables tables = StartTables(page932);
    tables.lead[SINGLE_SHIFT_2] = true;
    for (unsigned row = 0; row < 94; ++row)
        for (unsigned column = 0; column < 94; ++column)
            SetPair(tables, (FIRST + row) << 8 | (FIRST + column), page932.pairs[ShiftJis(row, column) - 0x8000]);
    for (unsigned byte = FIRST_KATAKANA; byte <= LAST_KATAKANA; ++byte)
        SetPair(tables, SINGLE_SHIFT_2 << 8 | byte, page932.single[byte]);
    FitLikeBase(page932, tables);
    return tables;
}

PageTables MakePlaneTables(const PageTables& page)
{
    PageTables tables = StartTables(page);
    for (unsigned lead = FIRST; lead <= LAST; ++lead)
        for (unsigned trail = FIRST; trail <= LAST; ++trail)
            SetPair(tables, lead << 8 | trail, page.pairs[(lead << 8 | trail) - 0x8000]);
    FitLikeBase(page, tables);
    return tables;
}

} // namespace qxplatform
