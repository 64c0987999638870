// Reads TIFF directories (TIFF 6.0), and the EXIF block of a photo, which is a TIFF inside of another file.
#pragma once

#include "docinfo/document_record.h"
#include "files/file_window.h"

#include <cstdint>

namespace qx
{

// Fills the record from the header at file position `base`, which is 0 for a TIFF file. Returns 0, or -1 if the header
// is bad. Damage after the header ends the reading; the values read before it are kept.
int ReadTIFF(clsDocu& record, FileWindow& file, std::uint32_t base);

} // namespace qx
