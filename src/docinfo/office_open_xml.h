// Parses the core properties of Office Open XML documents.
#pragma once

#include "docinfo/document_record.h"

#include <string_view>

namespace qx
{

// Parses `text`, the contents of docProps/core.xml. Entities aren't decoded. A missing value leaves its field
// unchanged.
void ParseOfficeOpenXml(clsDocu& record, std::wstring_view text);

} // namespace qx
