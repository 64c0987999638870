// Reads the head of a web page.
#pragma once

#include "docinfo/document_record.h"
#include "files/file_window.h"

namespace qx
{

// Looks at the first 64 KB only, as text of the default code page. Always returns 0.
int ReadHTML(clsDocu& record, FileWindow& file);

} // namespace qx
