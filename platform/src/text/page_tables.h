// Makes the tables of a page from ICU's converter and what the system does otherwise.
#pragma once

#include <minwindef.h>

#include <optional>

#include "text/best_fit.h"
#include "text/table_page.h"

namespace qxplatform
{

struct TablePageSource
{
    UINT number;
    const char* converter; // ICU's name
    BestFit bestFit;
    // The bytes that the page leaves undefined become characters of the private use area from here on; 0 where ICU's
    // table has no such bytes.
    wchar_t undefinedFrom = 0;
};

// Nothing where the installed ICU lacks the converter.
std::optional<PageTables> MakePageTables(const TablePageSource& source);

} // namespace qxplatform
