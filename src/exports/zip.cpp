// ZIP archives.
#include <qxut23/archives.h>
#include <qxut23/zip.h>

#include "core/errors/failure_text.h"
#include "exports/guard.h"
#include "zip/extraction.h"
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
              QXUT_ZIP_SUBFOLDERS == clsZIPFile::kSubfolders && QXUT_ZIP_MODES == clsZIPFile::kModes &&
              QXUT_ZIP_LINKS == clsZIPFile::kLinks && QXUT_ZIP_FOLDER == clsZIPFile::kFolder);
static_assert(QXUT_EXTRACT_OK == static_cast<int>(ExtractResult::Done) &&
              QXUT_EXTRACT_CANNOT_OPEN == static_cast<int>(ExtractResult::CannotOpen) &&
              QXUT_EXTRACT_NOT_ARCHIVE == static_cast<int>(ExtractResult::NotArchive) &&
              QXUT_EXTRACT_INCOMPLETE == static_cast<int>(ExtractResult::Incomplete) &&
              QXUT_EXTRACT_CANNOT_WRITE == static_cast<int>(ExtractResult::CannotWrite) &&
              QXUT_EXTRACT_STOPPED == static_cast<int>(ExtractResult::Stopped));

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

std::int32_t QxZIPAppend(
    HZIPFILE zip, const QXWCHAR* path, const QXWCHAR* comment, const QXWCHAR* storedName, std::uint32_t flags)
{
    return Guarded(clsZIPFile::kCannotStore,
        [&] { return zip ? FileOf(zip)->AddFile(path, storedName, comment, flags) : clsZIPFile::kOk; });
}

std::int32_t QxZIPAppendList(HZIPFILE zip, const QXWCHAR* folder, const QXWCHAR* pattern, std::uint32_t flags)
{
    return Guarded(clsZIPFile::kCannotStore, [&]
        { return zip ? FileOf(zip)->AddList(folder, String(), pattern ? pattern : L"*.*", flags) : clsZIPFile::kOk; });
}

// The only exported function that lets exceptions through.
std::int32_t UtilExtractZip(const QXWCHAR* fileName, const QXWCHAR* folder)
{
    ExtractZip(fileName, folder);
    return 1;
}

std::int32_t QxExtractZip(const QXWCHAR* fileName, const QXWCHAR* folder, std::uint32_t flags, QxExtractProblem problem,
    QxExtractProgress progress, void* context)
{
    return Guarded(std::int32_t{QXUT_EXTRACT_NO_MEMORY},
        [=]
        {
            String first;
            const auto report = [&](const String& name, const String& reason)
            {
                if (first.IsEmpty())
                    first = reason;
                if (problem)
                    problem(context, name, reason);
            };
            ExtractProgress show;
            if (progress)
                show = [=](const String& name, std::uint64_t done)
                {
                    return progress(context, name, done) != 0;
                };
            const bool withLinks = (flags & QXUT_EXTRACT_NO_LINKS) == 0;
            const ExtractResult result = ExtractArchive(fileName, folder, withLinks, report, show);
            if (result == ExtractResult::Stopped)
                SetFailureText(L"the extraction was stopped");
            else if (result != ExtractResult::Done)
                SetFailureText(first);
            return static_cast<std::int32_t>(result);
        });
}
