// What a profile on the clipboard is.
#pragma once

namespace qx
{

// Whether the clipboard holds a profile now. It need not be open.
bool IsProfileOnClipboard();

} // namespace qx
