// A document's bytes, and the text at its beginning.
#pragma once

#include "core/text/string.h"
#include "files/file.h"
#include "files/file_window.h"

#include <cstddef>
#include <cstdint>

namespace qx
{

// Returns the text at the file's beginning: the first FileWindow::kCapacity bytes up to the first zero byte, from the
// default 8-bit code page. Returns false if the bytes can't be read.
bool ReadFirstText(FileWindow& file, String& text);

// Returns a text from the default 8-bit code page. It ends at the first zero byte.
String TextOfBytes(const std::uint8_t* bytes, std::size_t count);

} // namespace qx
