// Reads the information group of a Rich Text file.
#pragma once

#include "core/text/text_buffer.h"
#include "docinfo/document_record.h"
#include "files/file_window.h"

#include <string_view>

namespace qx
{

// Looks at the first 64 KB only, as text of the default code page. Always returns 0.
int ReadRTF(clsDocu& record, FileWindow& file);

// Removes line ends, decodes \'hh to the character of that code until none is left, then replaces double backslashes
// with single ones.
TextBuffer DecodeRTF(std::wstring_view text);

} // namespace qx
