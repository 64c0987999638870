// Reads the properties of documents that are a single XML file.
#pragma once

#include "docinfo/document_record.h"
#include "files/file_window.h"

namespace qx
{

// Looks for the elements of Office Open XML and OpenDocument in the whole file, and for a block of office properties
// near its beginning if there are none. Returns 0, or -1 if the system's XML reader fails to return the data of a node.
int ReadXML(clsDocu& record, FileWindow& file);

} // namespace qx
