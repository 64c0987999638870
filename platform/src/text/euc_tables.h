// The double-byte sets of the East Asian pages as used by EUC and ISO 2022: both bytes are 0xA1 to 0xFE.
#pragma once

#include "text/table_page.h"

namespace qxplatform
{

// Returns JIS X 0208 with the additions of page 932 and, after SS2 (0x8E), half-width katakana.
PageTables MakeJapaneseEucTables(const PageTables& page932);

// Returns the part of page 936 or 949 in the 94 by 94 plane: GB 2312 or KS X 1001.
PageTables MakePlaneTables(const PageTables& page);

} // namespace qxplatform
