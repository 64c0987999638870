// Parses the properties of OpenDocument files.
#pragma once

#include "docinfo/document_record.h"

#include <string_view>

namespace qx
{

// Parses `text`, the contents of meta.xml. Entities aren't decoded. A missing value leaves its field unchanged.
void ParseOpenDocument(clsDocu& record, std::wstring_view text);

} // namespace qx
