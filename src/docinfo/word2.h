// Reads the summary of documents of Word for Windows 2.
#pragma once

#include "docinfo/document_record.h"
#include "files/file_window.h"

namespace qx
{

// Returns 0, or -1 if the table of summary texts isn't completely in the file. A missing text leaves its field
// unchanged.
int ReadWord2(clsDocu& record, FileWindow& file);

} // namespace qx
