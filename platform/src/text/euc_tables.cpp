#include "text/euc_tables.h"

namespace qxplatform
{

namespace
{

constexpr unsigned kFirst = 0xa1;
constexpr unsigned kLast = 0xfe;
constexpr unsigned kSingleShift2 = 0x8e;
constexpr unsigned kFirstKatakana = 0xa1;
constexpr unsigned kLastKatakana = 0xdf;

PageTables StartTables(const PageTables& base)
{
    PageTables tables;
    tables.undefinedCharacter = base.undefinedCharacter;
    tables.pairs.assign(0x8000, PageTables::kUndefined);
    tables.exact.assign(PageTables::kUnits, 0);
    for (unsigned byte = 0; byte < 256; ++byte)
    {
        tables.lead[byte] = byte >= kFirst && byte <= kLast;
        tables.single[byte] = byte < 0x80 ? static_cast<wchar_t>(byte) : base.undefinedCharacter;
        tables.strict[byte] = byte >= 0x80;
        if (byte < 0x80)
            tables.exact[byte] = static_cast<std::uint16_t>(byte);
    }
    return tables;
}

void SetPair(PageTables& tables, unsigned code, wchar_t unit)
{
    if (unit == PageTables::kUndefined)
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
    for (std::size_t unit = 0x80; unit < PageTables::kUnits; ++unit)
    {
        const std::uint16_t code = base.fitted[unit];
        if (tables.fitted[unit] != 0 || code == 0)
            continue;
        const wchar_t fit = code > 0xff ? base.pairs[code - 0x8000] : base.single[code];
        if (fit != PageTables::kUndefined)
            tables.fitted[unit] = tables.exact[fit];
    }
}

} // namespace

PageTables MakeJapaneseEucTables(const PageTables& page932)
{
    PageTables tables = StartTables(page932);
    tables.lead[kSingleShift2] = true;
    for (unsigned row = 0; row < 94; ++row)
        for (unsigned column = 0; column < 94; ++column)
            SetPair(tables, (kFirst + row) << 8 | (kFirst + column), page932.pairs[ShiftJis(row, column) - 0x8000]);
    for (unsigned byte = kFirstKatakana; byte <= kLastKatakana; ++byte)
        SetPair(tables, kSingleShift2 << 8 | byte, page932.single[byte]);
    FitLikeBase(page932, tables);
    return tables;
}

PageTables MakePlaneTables(const PageTables& page)
{
    PageTables tables = StartTables(page);
    for (unsigned lead = kFirst; lead <= kLast; ++lead)
        for (unsigned trail = kFirst; trail <= kLast; ++trail)
            SetPair(tables, lead << 8 | trail, page.pairs[(lead << 8 | trail) - 0x8000]);
    FitLikeBase(page, tables);
    return tables;
}

} // namespace qxplatform
