// The temp file manager.
#include <qxut23/tempfiles.h>

#include "exports/guard.h"
#include "files/temp_files.h"
#include "threads/temp_file_manager.h"

#include <cstdint>

using namespace qx;

void UtilTempFileMgrOpen()
{
    Guarded([] { OpenTempFileManager(); });
}

void UtilTempFileMgrClose()
{
    Guarded([] { CloseTempFileManager(); });
}

void UtilTempFileMgrAdd(const QXWCHAR* fileName)
{
    if (fileName)
        Guarded([=] { AddTempFile(fileName); });
}

std::int32_t UtilTempFileMgrCreateFile(
    const QXWCHAR* prefix, const QXWCHAR* extension, std::uint32_t, QXWCHAR** fileName)
{
    if (!prefix || !extension || !fileName)
        return 0;
    return Guarded(0,
        [=]
        {
            MakeTempFile(kTempSubfolder, prefix, extension, nullptr).ToBSTR(fileName);
            return 1;
        });
}
