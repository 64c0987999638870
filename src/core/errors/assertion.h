// The box of a failed assertion.
#pragma once

#include "core/text/string.h"

namespace qx
{

// What the box shows.
String AssertionText(const wchar_t* expression, const wchar_t* file, unsigned line);

// Shows the box. Retry and Cancel both end the process, with exit code -1: only a replacement of the box that answers
// OK lets it go on.
void Assert(const wchar_t* expression, const wchar_t* file, unsigned line);

// Ends the process as the box does.
void EndAfterAssertion();

} // namespace qx
