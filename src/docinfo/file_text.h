// Reads texts from a file, in 8-bit characters or UTF-16.
#pragma once

#include "core/text/string.h"
#include "files/file.h"
#include "files/file_window.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace qx
{

// Returns the text at the file's beginning: the first FileWindow::kCapacity bytes up to the first zero byte, from the
// default 8-bit code page. Returns false if the bytes can't be read.
bool ReadFirstText(FileWindow& file, String& text);

// Converts bytes in the default 8-bit code page to text, up to the first zero byte.
String TextOfBytes(const std::uint8_t* bytes, std::size_t count);

// Reads a text of at most `most` bytes up to its first zero character. A character has `unit` bytes. The text is read
// in steps, because it may end long before `most`.
std::string ReadToZero(FileWindow& file, std::uint64_t begin, std::size_t most, std::size_t unit);

// Converts UTF-16 bytes to text. An odd last byte is ignored.
String WideTextOfBytes(std::string_view bytes);

} // namespace qx
