// Chooses the reader for a file.
#pragma once

#include "docinfo/document_record.h"
#include "files/file_window.h"

#include <cstdint>

namespace qx
{

// The consequence of a reader's failure.
enum class ReaderFailure
{
    ClearsRecord, // the document counts as inaccessible
    Ignored       // the record keeps its values and the file's times
};

struct ReaderRow
{
    const wchar_t* name; // for diagnostics
    // Returns 0, or a negative number on failure.
    int (*read)(clsDocu& record, FileWindow& file);
    ReaderFailure failure;
};

// Chooses a reader by the extension, otherwise by the first four bytes. Returns null if there is no reader for the
// file.
const ReaderRow* ChooseReader(const String& path, FileWindow& file);

} // namespace qx
