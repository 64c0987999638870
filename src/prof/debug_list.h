// A tree in the debug output.
#pragma once

namespace qx
{

class clsItemList;

// A line for the list, and below it, one level deeper, one for each of its entries.
void WriteDebugList(const clsItemList& list);

} // namespace qx
