// Checks the clipboard for a profile.
#pragma once

namespace qx
{

// Returns true if the clipboard currently holds a profile. The clipboard need not be open.
bool IsProfileOnClipboard();

} // namespace qx
