// The file of a document.
#pragma once

#include "files/file.h"

namespace qx
{

// A document opened for reading. Others may read it at the same time. The owner destroys the object; releasing the last
// reference doesn't, because readers may pass it to the system as a stream.
class clsDocFile : public clsFileRO
{
public:
    explicit clsDocFile(const String& path)
        : clsFileRO(path, FileAccess::Read, FileDisposition::OpenExisting, FileShare::Read, kFileAttributeNormal)
    {
        SetDeleteOnLastRelease(false);
    }
    // Reads the document from a stream.
    explicit clsDocFile(IStream* stream) : clsFileRO(stream) { SetDeleteOnLastRelease(false); }
};

// Reads the time of the last write. Returns false if the system doesn't report it.
bool GetLastWriteTime(clsFile& file, FILETIME& time);

} // namespace qx
