// Reads the EXIF block of a JPEG file.
#pragma once

#include "docinfo/document_record.h"
#include "files/file_window.h"

namespace qx
{

// Returns 0, or -1 if there is no EXIF block in the first APP1 segment.
int ReadJPEG(clsDocu& record, FileWindow& file);

} // namespace qx
