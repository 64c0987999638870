// Reads the header of a mail file (RFC 822).
#pragma once

#include "core/text/text_buffer.h"
#include "docinfo/document_record.h"
#include "files/file_window.h"

#include <optional>
#include <string_view>

namespace qx
{

// The subject becomes the title, the sender the author, the recipients the last author, and the date is the time of
// creation. Looks at the first 64 KB only, as text of the default code page. Always returns 0.
int ReadMail(clsDocu& record, FileWindow& file);

// Returns the text in front of the first empty line, or nothing if there is none.
std::optional<std::wstring_view> FindMailHeader(std::wstring_view text);

// Returns the decoded text of a header field. Its name determines whether it contains addresses.
TextBuffer DecodeMailField(std::wstring_view value, std::wstring_view name);

} // namespace qx
