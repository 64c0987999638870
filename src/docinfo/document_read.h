// Reads a document into its record.
#pragma once

#include "core/critical_section.h"
#include "docinfo/document_record.h"

#include <cstdint>

namespace qx
{

// Reads the file at the record's resolved path if it has changed since it was last read. `readBefore` is the tick of
// the refresh before this one, or 0 if there was none. Enters `section`, unless it is null, before changing the record,
// and leaves it at the end.
//
// Tries in this order: the system's property store, if there is one; for compound files, the reader of messages
// (extension ".msg") or of property sets; the reader from the reader table.
void ReadDocument(clsDocu& record, std::uint64_t readBefore, clsCriticalSection* section);

} // namespace qx
