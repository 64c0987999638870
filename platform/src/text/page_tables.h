// Builds the tables of a page from ICU's converter and the known differences between ICU's page and the system's.
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
    // Undefined bytes of the page are mapped to private use characters starting here; 0 if ICU's table has no undefined
    // bytes.
    wchar_t undefinedFrom = 0;
};

// Returns the tables of a page, or nothing if the installed ICU lacks the converter.
std::optional<PageTables> MakePageTables(const TablePageSource& source);

} // namespace qxplatform
