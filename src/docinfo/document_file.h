// The file of a document.
#pragma once

#include "files/file.h"

namespace qx
{

// A document opened for reading. Others may read it at the same time. Its owner destroys it, although readers may pass
// it to the system as a stream.
class clsDocFile : public clsFileRO
{
public:
    explicit clsDocFile(const String& path)
        : clsFileRO(path, FileAccess::Read, FileDisposition::OpenExisting, FileShare::Read, kFileAttributeNormal)
    {
        SetDeleteOnLastRelease(false);
    }
    // Reads from a stream instead.
    explicit clsDocFile(IStream* stream) : clsFileRO(stream) { SetDeleteOnLastRelease(false); }
};

// Reads the time of the last write. Returns false if the system doesn't tell.
bool GetLastWriteTime(clsFile& file, FILETIME& time);

} // namespace qx
