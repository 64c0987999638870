#include "docinfo/document_file.h"

namespace qx
{

bool GetLastWriteTime(clsFile& file, FILETIME& time)
{
    if (IStream* const stream = file.GetStream())
    {
        STATSTG record = {};
        if (FAILED(stream->Stat(&record, STATFLAG_NONAME)))
            return false;
        time = record.mtime;
        return true;
    }
    return GetFileTime(file.GetHandle(), nullptr, nullptr, &time) != FALSE;
}

} // namespace qx
