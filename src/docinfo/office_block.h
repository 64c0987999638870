// Reads the block of properties that office programs write into web pages and XML files.
#pragma once

#include "docinfo/document_record.h"

#include <string_view>

namespace qx
{

// Parses `text`, the contents of the element <o:DocumentProperties>. Always returns 0.
int ParseOfficeProperties(clsDocu& record, std::wstring_view text);

} // namespace qx
