// The double-byte sets of the East Asian pages as used by EUC and ISO 2022: both bytes are 0xA1 to 0xFE.
#pragma once

#include "text/table_page.h"

namespace qxplatform
{

// JIS X 0208 with the additions of page 932, and half-width katakana after SS2 (0x8E).
PageTables MakeJapaneseEucTables(const PageTables& page932);

// The part of pages 936 and 949 in the 94 by 94 plane: GB 2312 and KS X 1001.
PageTables MakePlaneTables(const PageTables& page);

} // namespace qxplatform
