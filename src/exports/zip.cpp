// ZIP archives.
#include <qxut23/zip.h>

#include "exports/guard.h"
#include "zip/unzipper.h"
#include "zip/zip_file.h"

#include <cstdint>
#include <memory>

using namespace qx;

namespace
{

clsZIPFile* FileOf(HZIPFILE zip)
{
    return reinterpret_cast<clsZIPFile*>(zip);
}

} // namespace

static_assert(QXUT_ZIP_OK == clsZIPFile::kOk && QXUT_ZIP_CANNOT_OPEN == clsZIPFile::kCannotOpen &&
              QXUT_ZIP_CANNOT_STORE == clsZIPFile::kCannotStore && QXUT_ZIP_CANNOT_WRITE == clsZIPFile::kCannotWrite &&
              QXUT_ZIP_SUBFOLDERS == clsZIPFile::kSubfolders);

HZIPFILE UtilZIPCreate(const QXWCHAR* fileName, const QXWCHAR* comment)
{
    return Guarded(HZIPFILE{},
        [&]
        {
            auto file = std::make_unique<clsZIPFile>(fileName, comment);
            return file->IsOpen() ? reinterpret_cast<HZIPFILE>(file.release()) : nullptr;
        });
}

std::int32_t UtilZIPAppend(HZIPFILE zip, const QXWCHAR* path, const QXWCHAR* comment, const QXWCHAR* storedName)
{
    return Guarded(clsZIPFile::kCannotStore,
        [&] { return zip ? FileOf(zip)->AddFile(path, storedName, comment) : clsZIPFile::kOk; });
}

std::int32_t UtilZIPAppendList(HZIPFILE zip, const QXWCHAR* folder, const QXWCHAR* pattern, std::uint32_t flags)
{
    Guarded(
        [&]
        {
            if (zip)
                FileOf(zip)->AddList(folder, String(), pattern ? pattern : L"*.*", flags);
        });
    return QXUT_ZIP_OK;
}

std::int32_t UtilZIPClose(HZIPFILE zip)
{
    const std::unique_ptr<clsZIPFile> file(FileOf(zip));
    return Guarded(clsZIPFile::kCannotWrite, [&] { return file ? file->Close() : clsZIPFile::kOk; });
}

// The only exported function that lets exceptions through.
std::int32_t UtilExtractZip(const QXWCHAR* fileName, const QXWCHAR* folder)
{
    ExtractZip(fileName, folder);
    return 1;
}
