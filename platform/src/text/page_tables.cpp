#include "text/page_tables.h"

#include <unicode/ucnv.h>
#include <unicode/ucnv_err.h>
#include <unicode/uset.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <new>

namespace qxplatform
{

namespace
{

constexpr wchar_t kUndefined = PageTables::kUndefined;

struct Amendment
{
    UINT page;
    unsigned char byte;
    wchar_t unit; // kUndefined if the byte is undefined in the system's page
};

// Differences between the system's pages and ICU's. The four 7-bit pages are the national variants of ISO 646.
constexpr Amendment kAmendments[] = {
    {437, 0xe6, 0x00b5},
    {852, 0xaa, 0x00ac},
    {860, 0xe6, 0x00b5},
    {861, 0xe6, 0x00b5},
    {862, 0xe6, 0x00b5},
    {863, 0xe6, 0x00b5},
    {865, 0xe6, 0x00b5},
    {932, 0x80, 0x0080},
    {949, 0x80, 0x0080},
    {950, 0x80, 0x0080},
    {1253, 0xaa, kUndefined},
    {1255, 0xca, 0x05ba},
    {20105, 0x24, 0x00a4},
    {20105, 0x7e, 0x203e},
    {20106, 0x40, 0x00a7},
    {20106, 0x5b, 0x00c4},
    {20106, 0x5c, 0x00d6},
    {20106, 0x5d, 0x00dc},
    {20106, 0x7b, 0x00e4},
    {20106, 0x7c, 0x00f6},
    {20106, 0x7d, 0x00fc},
    {20106, 0x7e, 0x00df},
    {20107, 0x24, 0x00a4},
    {20107, 0x5b, 0x00c4},
    {20107, 0x5c, 0x00d6},
    {20107, 0x5d, 0x00c5},
    {20107, 0x7b, 0x00e4},
    {20107, 0x7c, 0x00f6},
    {20107, 0x7d, 0x00e5},
    {20107, 0x7e, 0x203e},
    {20108, 0x5b, 0x00c6},
    {20108, 0x5c, 0x00d8},
    {20108, 0x5d, 0x00c5},
    {20108, 0x7b, 0x00e6},
    {20108, 0x7c, 0x00f8},
    {20108, 0x7d, 0x00e5},
    {20108, 0x7e, 0x203e},
    {21866, 0xae, 0x045e},
    {21866, 0xbe, 0x040e},
    {28597, 0xa1, 0x02bd},
    {28597, 0xa2, 0x02bc},
    {28597, 0xa4, kUndefined},
    {28597, 0xa5, kUndefined},
    {28597, 0xaa, kUndefined},
    {28598, 0xaf, 0x203e},
    {28598, 0xfd, kUndefined},
    {28598, 0xfe, kUndefined},
};

constexpr wchar_t kFirstPrivate = 0xe000;
constexpr wchar_t kLastPrivate = 0xf8ff;
constexpr wchar_t kKatakanaMiddleDot = 0x30fb; // represents invalid bytes in page 932

class Converter
{
public:
    explicit Converter(const char* name)
    {
        UErrorCode status = U_ZERO_ERROR;
        _converter.reset(ucnv_open(name, &status));
        if (status == U_MEMORY_ALLOCATION_ERROR) // the data exist, so a later attempt may succeed
            throw std::bad_alloc();
        if (!IsOpen())
            return;
        ucnv_setToUCallBack(_converter.get(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
        ucnv_setFromUCallBack(_converter.get(), UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
        ucnv_setFallback(_converter.get(), false);
    }

    // Returns false if the installed ICU data lacks the converter.
    bool IsOpen() const { return _converter != nullptr; }

    bool IsDoubleByte() const { return ucnv_getMaxCharSize(_converter.get()) == 2; }

    bool IsLeadByte(unsigned char byte) const
    {
        UErrorCode status = U_ZERO_ERROR;
        UBool starters[256]{};
        ucnv_getStarters(_converter.get(), starters, &status);
        return U_SUCCESS(status) && starters[byte];
    }

    wchar_t ToUnit(std::string_view bytes) const
    {
        UErrorCode status = U_ZERO_ERROR;
        UChar units[4];
        const std::int32_t count = ucnv_toUChars(
            _converter.get(), units, std::size(units), bytes.data(), static_cast<std::int32_t>(bytes.size()), &status);
        return U_SUCCESS(status) && count == 1 ? static_cast<wchar_t>(units[0]) : kUndefined;
    }

    // Returns 0 if there is no such code. The supported code pages have no codes longer than two bytes.
    std::uint16_t ToCode(wchar_t unit) const
    {
        UErrorCode status = U_ZERO_ERROR;
        const UChar text = static_cast<UChar>(unit);
        char bytes[8];
        const std::int32_t count = ucnv_fromUChars(_converter.get(), bytes, std::size(bytes), &text, 1, &status);
        if (U_FAILURE(status) || count < 1 || count > 2)
            return 0;
        const auto byte = [&bytes](int i)
        {
            return static_cast<unsigned char>(bytes[i]);
        };
        return static_cast<std::uint16_t>(count == 1 ? byte(0) : byte(0) << 8 | byte(1));
    }

    struct Fallback
    {
        wchar_t unit;
        std::uint16_t code;
    };

    // Returns the codes that the converter writes only as fallbacks: it decodes them to other characters.
    std::vector<Fallback> Fallbacks()
    {
        UErrorCode status = U_ZERO_ERROR;
        const Set roundtrip(uset_openEmpty());
        const Set all(uset_openEmpty());
        if (!roundtrip || !all)
            throw std::bad_alloc();
        ucnv_getUnicodeSet(_converter.get(), roundtrip.get(), UCNV_ROUNDTRIP_SET, &status);
        ucnv_getUnicodeSet(_converter.get(), all.get(), UCNV_ROUNDTRIP_AND_FALLBACK_SET, &status);
        if (status == U_MEMORY_ALLOCATION_ERROR)
            throw std::bad_alloc();
        uset_removeAll(all.get(), roundtrip.get());
        uset_removeRange(all.get(), 0x10000, 0x10ffff);
        std::vector<Fallback> fallbacks;
        ucnv_setFallback(_converter.get(), true);
        for (std::int32_t i = 0; i < uset_size(all.get()); ++i)
        {
            const auto unit = static_cast<wchar_t>(uset_charAt(all.get(), i));
            fallbacks.push_back({unit, ToCode(unit)});
        }
        ucnv_setFallback(_converter.get(), false);
        return fallbacks;
    }

private:
    struct Close
    {
        void operator()(UConverter* converter) const { ucnv_close(converter); }
    };
    struct CloseSet
    {
        void operator()(USet* set) const { uset_close(set); }
    };
    using Set = std::unique_ptr<USet, CloseSet>;

    std::unique_ptr<UConverter, Close> _converter;
};

bool IsSevenBit(UINT page)
{
    return page >= 20105 && page <= 20127;
}

wchar_t SingleByte(const TablePageSource& source, const Converter& converter, unsigned char byte)
{
    for (const Amendment& amendment : kAmendments)
        if (amendment.page == source.number && amendment.byte == byte)
            return amendment.unit;
    // ICU's console pages swap some control characters for mainframes.
    if (byte < 0x20 || byte == 0x7f)
        return byte;
    const char text = static_cast<char>(byte);
    return converter.ToUnit({&text, 1});
}

void ReadSingleBytes(const TablePageSource& source, const Converter& converter, PageTables& tables)
{
    wchar_t nextUndefined = source.undefinedFrom;
    for (unsigned byte = 0; byte < 256; ++byte)
    {
        if (IsSevenBit(source.number) && byte >= 0x80)
        {
            tables.single[byte] = tables.single[byte & 0x7f];
            continue;
        }
        wchar_t unit = SingleByte(source, converter, static_cast<unsigned char>(byte));
        if (unit == kUndefined && nextUndefined != 0 && !tables.lead[byte])
            unit = nextUndefined++;
        tables.strict[byte] = unit >= kFirstPrivate && unit <= kLastPrivate;
        tables.single[byte] = unit;
        if (byte < 0x80 && unit != byte)
            tables.asciiTransparent = false;
    }
}

void ReadPairs(const Converter& converter, PageTables& tables)
{
    tables.pairs.assign(0x8000, kUndefined);
    for (unsigned code = 0x8000; code <= 0xffff; ++code)
    {
        if (!tables.lead[code >> 8] || (code & 0xff) < 0x40)
            continue;
        const char bytes[] = {static_cast<char>(code >> 8), static_cast<char>(code & 0xff)};
        tables.pairs[code - 0x8000] = converter.ToUnit({bytes, 2});
    }
}

// Fills the table of codes. A unit is encoded as its lowest code, unless ICU prefers another one (page 932 has
// characters at up to three positions).
void Invert(const Converter& converter, PageTables& tables)
{
    tables.exact.assign(PageTables::kUnits, 0);
    for (unsigned byte = 0; byte < 256; ++byte)
    {
        const wchar_t unit = tables.single[byte];
        if (unit != kUndefined && unit != 0 && tables.exact[unit] == 0)
            tables.exact[unit] = static_cast<std::uint16_t>(byte);
    }
    for (unsigned i = 0; i < tables.pairs.size(); ++i)
    {
        const wchar_t unit = tables.pairs[i];
        if (unit == kUndefined)
            continue;
        if (tables.exact[unit] == 0)
            tables.exact[unit] = static_cast<std::uint16_t>(0x8000 + i);
        else if (const std::uint16_t preferred = converter.ToCode(unit); preferred != 0)
            tables.exact[unit] = preferred;
    }
}

void AddBestFits(const TablePageSource& source, Converter& converter, PageTables& tables)
{
    tables.fitted = tables.exact;
    const auto add = [&tables](wchar_t unit, std::uint16_t code)
    {
        if (unit >= 0x80 && tables.fitted[unit] == 0)
            tables.fitted[unit] = code;
    };
    for (const Converter::Fallback& fallback : converter.Fallbacks())
        add(fallback.unit, fallback.code);
    for (const Similar& row : SimilarCharacters(source.bestFit))
        add(row.unit, tables.exact[row.similar]);
}

} // namespace

std::optional<PageTables> MakePageTables(const TablePageSource& source)
{
    Converter converter(source.converter);
    if (!converter.IsOpen())
        return std::nullopt;
    PageTables tables;
    if (source.number == 932)
        tables.undefinedCharacter = kKatakanaMiddleDot;
    if (converter.IsDoubleByte())
        for (unsigned byte = 0x80; byte < 256; ++byte)
            tables.lead[byte] = converter.IsLeadByte(static_cast<unsigned char>(byte));
    ReadSingleBytes(source, converter, tables);
    if (converter.IsDoubleByte())
        ReadPairs(converter, tables);
    Invert(converter, tables);
    AddBestFits(source, converter, tables);
    return tables;
}

} // namespace qxplatform
