// Reads the summary of WordPerfect documents.
#pragma once

#include "docinfo/document_record.h"
#include "files/file_window.h"

namespace qx
{

// Returns 0, or -1 if the file is encrypted, has a major version other than 2, or has no extended document summary.
// Reads at most 100,000 records, 64 MB in total.
int ReadWordPerfect(clsDocu& record, FileWindow& file);

} // namespace qx
