#include "text/code_page.h"

#include <winnls.h>

#include <algorithm>
#include <array>
#include <memory>

#include "base/forever.h"
#include "text/euc_tables.h"
#include "text/page_tables.h"
#include "text/shifted_page.h"
#include "text/table_page.h"
#include "text/utf7_page.h"
#include "text/utf8_page.h"

namespace qxplatform
{

namespace
{

// Pages that consist of one table, by number.
constexpr TablePageSource kTablePages[] = {
    {437, "ibm-437_P100-1995", BestFit::Latin},
    {737, "ibm-737_P100-1997", BestFit::Common},
    {775, "ibm-775_P100-1996", BestFit::Latin},
    {850, "ibm-850_P100-1995", BestFit::Latin},
    {852, "ibm-852_P100-1995", BestFit::Latin},
    {855, "ibm-855_P100-1995", BestFit::Common},
    {857, "ibm-857_P100-1995", BestFit::Latin, 0xf8bb},
    {858, "ibm-858_P100-1997", BestFit::Latin},
    {860, "ibm-860_P100-1995", BestFit::Latin},
    {861, "ibm-861_P100-1995", BestFit::Latin},
    {862, "ibm-862_P100-1995", BestFit::Latin},
    {863, "ibm-863_P100-1995", BestFit::Latin},
    {865, "ibm-865_P100-1995", BestFit::Latin},
    {866, "ibm-866_P100-1995", BestFit::Common},
    {874, "windows-874-2000", BestFit::AsConverter, 0xf8c1},
    {932, "ibm-943_P15A-2003", BestFit::LatinOne, 0xf8f0},
    {936, "windows-936-2000", BestFit::AsConverter, 0xf8f5},
    {949, "windows-949-2000", BestFit::AsConverter, 0xf8f7},
    {950, "windows-950-2000", BestFit::AsConverter, 0xf8f8},
    {1250, "ibm-5346_P100-1998", BestFit::Latin},
    {1251, "ibm-5347_P100-1998", BestFit::Common},
    {1252, "ibm-5348_P100-1997", BestFit::Latin},
    {1253, "ibm-5349_P100-1998", BestFit::Common, 0xf8f9},
    {1254, "ibm-5350_P100-1998", BestFit::Latin},
    {1255, "ibm-9447_P100-2002", BestFit::AsConverter, 0xf88d},
    {1256, "ibm-9448_X100-2005", BestFit::AsConverter},
    {1257, "ibm-9449_P100-2002", BestFit::AsConverter, 0xf8fc},
    {1258, "ibm-5354_P100-1998", BestFit::AsConverter},
    {20105, "US-ASCII", BestFit::AsConverter},
    {20106, "US-ASCII", BestFit::AsConverter},
    {20107, "US-ASCII", BestFit::AsConverter},
    {20108, "US-ASCII", BestFit::AsConverter},
    {20127, "US-ASCII", BestFit::Common},
    {20866, "KOI8-R", BestFit::Common},
    {21866, "KOI8-U", BestFit::Common},
    {28591, "ISO-8859-1", BestFit::Common},
    {28592, "ISO-8859-2", BestFit::Common},
    {28593, "ISO-8859-3", BestFit::Common, 0xf7f5},
    {28594, "ISO-8859-4", BestFit::Common},
    {28595, "ISO-8859-5", BestFit::Common},
    {28596, "ISO-8859-6", BestFit::Common, 0xf7c8},
    {28597, "ISO-8859-7", BestFit::Common, 0xf7c2},
    {28598, "ISO-8859-8", BestFit::Common, 0xf79c},
    {28599, "ISO-8859-9", BestFit::Common},
    {28605, "ISO-8859-15", BestFit::Common},
};

// Pages with the characters of a page above in another encoding.
struct DerivedPageSource
{
    UINT number;
    UINT base;
    const ShiftRules* rules; // null for EUC
};

constexpr DerivedPageSource kDerivedPages[] = {
    {50220, 932, &ISO_2022_JP},
    {50221, 932, &ISO_2022_JP_KATAKANA},
    {50222, 932, &ISO_2022_JP_SHIFT_OUT},
    {50225, 949, &ISO_2022_KR},
    {51932, 932, nullptr},
    {51949, 949, nullptr},
    {52936, 936, &HZ},
};

constexpr bool IsSorted()
{
    const auto less = [](const TablePageSource& a, const TablePageSource& b)
    {
        return a.number < b.number;
    };
    return std::is_sorted(std::begin(kTablePages), std::end(kTablePages), less);
}
static_assert(IsSorted());

std::unique_ptr<CodePage> MakeTablePage(const TablePageSource& source)
{
    std::optional<PageTables> tables = MakePageTables(source);
    return tables ? std::make_unique<TablePage>(std::move(*tables)) : nullptr;
}

std::unique_ptr<CodePage> MakeDerivedPage(const DerivedPageSource& source)
{
    const auto* const base = static_cast<const TablePage*>(FindCodePage(source.base));
    if (base == nullptr)
        return nullptr;
    PageTables plane = source.base == 932 ? MakeJapaneseEucTables(base->Tables()) : MakePlaneTables(base->Tables());
    if (source.rules == nullptr)
        return std::make_unique<TablePage>(std::move(plane));
    return std::make_unique<ShiftedPage>(*source.rules, std::move(plane));
}

// A page that is created at its first use.
template <class Source>
struct Slot
{
    Forever<std::unique_ptr<CodePage>> page;

    const CodePage* Get(const Source& source, std::unique_ptr<CodePage> (*make)(const Source&))
    {
        return page.Get([&] { return make(source); }).get();
    }
};

struct Pages
{
    Utf7Page utf7;
    Utf8Page utf8;
    std::array<Slot<TablePageSource>, std::size(kTablePages)> tables;
    std::array<Slot<DerivedPageSource>, std::size(kDerivedPages)> derived;
};

// Never destroyed: static objects of other modules convert text while the process ends.
Pages& AllPages()
{
    static constinit Forever<Pages> pages;
    return pages.Get();
}

template <class Source, std::size_t Count>
const Source* FindSource(const Source (&sources)[Count], UINT number)
{
    const Source* const found = std::lower_bound(std::begin(sources), std::end(sources), number,
        [](const Source& source, UINT wanted) { return source.number < wanted; });
    return found != std::end(sources) && found->number == number ? found : nullptr;
}

UINT ResolveDefault(UINT number)
{
    switch (number)
    {
    case CP_ACP:
    case CP_THREAD_ACP:
        return DefaultCodePage();
    case CP_OEMCP:
        return DefaultOemCodePage();
    default:
        return number;
    }
}

} // namespace

const CodePage* FindCodePage(UINT number)
{
    number = ResolveDefault(number);
    Pages& pages = AllPages();
    if (number == CP_UTF8)
        return &pages.utf8;
    if (number == CP_UTF7)
        return &pages.utf7;
    if (const TablePageSource* const source = FindSource(kTablePages, number))
        return pages.tables[static_cast<std::size_t>(source - kTablePages)].Get(*source, MakeTablePage);
    if (const DerivedPageSource* const source = FindSource(kDerivedPages, number))
        return pages.derived[static_cast<std::size_t>(source - kDerivedPages)].Get(*source, MakeDerivedPage);
    return nullptr;
}

bool IsCodePageOffered(UINT number)
{
    return number == CP_UTF8 || number == CP_UTF7 || FindSource(kTablePages, number) != nullptr ||
           FindSource(kDerivedPages, number) != nullptr;
}

} // namespace qxplatform
