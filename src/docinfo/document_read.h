// Reads a document into its record.
#pragma once

#include "core/critical_section.h"
#include "docinfo/document_record.h"

#include <cstdint>

namespace qx
{

// First the system's property store, if it has one, may know the document. Compound files go to the reader of property
// sets, and those with the extension ".msg" to the one of messages; if it fails, and for all other files, the reader
// table decides.
//
// Reads the file at the record's resolved path if it has changed since it was last read. `readBefore` is the tick of
// the refresh before this one, or 0 if there was none. With a section, the record isn't changed before the section is
// taken, and the section is then held until the end.
void ReadDocument(clsDocu& record, std::uint64_t readBefore, clsCriticalSection* section);

} // namespace qx
