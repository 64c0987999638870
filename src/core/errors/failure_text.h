// The text of each thread's last failure, for callers that want more than a result code.
#pragma once

#include "core/text/string.h"

namespace qx
{

// Replaces the calling thread's text. If memory is short, the text is lost. The texts of the 256 threads that failed
// last are kept.
void SetFailureText(const wchar_t* text) noexcept;
void SetFailureText(const char* text) noexcept;

// Returns the calling thread's text, or an empty text if it had no failure.
String FailureText();

} // namespace qx
