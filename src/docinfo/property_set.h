// Reads the summary information of compound files: a property set ([MS-OLEPS]) in one of their streams.
#pragma once

#include "docinfo/document_record.h"
#include "files/file_window.h"

namespace qx
{

// Reads the compound file at a path. Returns 0, or -1 if it can't be opened or has no summary information.
int ReadPropertySet(clsDocu& record, const String& path);

// Reads the contents of the stream. Returns 0, or -1 if the summary information isn't among its property sets.
int ReadSummaryInformation(clsDocu& record, FileWindow& stream);

} // namespace qx
