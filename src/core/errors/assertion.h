// The message box of a failed assertion.
#pragma once

#include "core/text/string.h"

namespace qx
{

// Returns the text of the message box.
String AssertionText(const wchar_t* expression, const wchar_t* file, unsigned line);

// Shows the message box. Retry and Cancel both end the process with exit code -1. The process continues only if a
// replacement of the message box returns IDOK.
void Assert(const wchar_t* expression, const wchar_t* file, unsigned line);

// Ends the process like a failed assertion does.
void EndAfterAssertion();

} // namespace qx
