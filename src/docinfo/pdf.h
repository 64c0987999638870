// Reads the document information dictionary of a PDF file.
#pragma once

#include "docinfo/document_record.h"
#include "files/file_window.h"

#include <string_view>

namespace qx
{

// Always returns 0. Faults end the reading early and are written to the debug output.
int ReadPDF(clsDocu& record, FileWindow& file);

// Parses a date such as "D:20120304050607+01'00'", whose last parts may be missing, and converts it to UTC. Returns
// kNoTime for any other text.
SYSTEMTIME ParsePDFDate(std::wstring_view text);

} // namespace qx
