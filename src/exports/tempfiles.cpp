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
    const QXWCHAR* prefix, const QXWCHAR* extension, std::uint32_t flags, QXWCHAR** fileName)
{
    if (!prefix || !extension || !fileName)
        return 0;
    return Guarded(0,
        [=]
        {
            const bool longNames = (flags & QXUT_TEMPFILE_LONG_PATH) != 0;
            MakeTempFile(kTempSubfolder, prefix, extension, longNames, nullptr).ToBSTR(fileName);
            return 1;
        });
}
