// Writes a tree to the debug output.
#pragma once

namespace qx
{

class clsItemList;

// Writes a line for the list, followed by a line for each of its entries, indented by one level.
void WriteDebugList(const clsItemList& list);

} // namespace qx
