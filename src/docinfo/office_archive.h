// Reads the properties of office documents that are ZIP archives: Office Open XML and OpenDocument.
#pragma once

#include "docinfo/document_record.h"
#include "files/file_window.h"

#include <string_view>

namespace qx
{

// Returns 0, or -1 if the file is no archive or contains no properties.
int ReadOfficeArchive(clsDocu& record, FileWindow& file);

// Returns the encoding of the XML declaration, which may be empty. Returns a view without data if there is none.
std::wstring_view DeclaredEncoding(std::wstring_view text);

} // namespace qx
