// Parses the core properties of Office Open XML documents.
#pragma once

#include "docinfo/document_record.h"

#include <string_view>

namespace qx
{

// `text` is docProps/core.xml. Entities aren't decoded. What isn't found leaves its field alone.
void ParseOfficeOpenXml(clsDocu& record, std::wstring_view text);

} // namespace qx
